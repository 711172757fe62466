"""What the companion shows on a real terminal, and what it does not when there is none.

usage: terminal_test.py THERMIKA DESCRIPTION_FOLDER

Ends with 1 and says what was wrong first; prints how many checks were made.
"""

import http.server
import os
import re
import subprocess
import sys
import tempfile
import threading
import time

import pexpect

TOOL, EXAMPLES = sys.argv[1:3]
SERIAL = "14080045"
checks = 0


def check(holds, what):
    global checks
    checks += 1
    if not holds:
        print("FAILED: " + what, file=sys.stderr)
        sys.exit(1)


def on_terminal(arguments, columns=80, program=(TOOL,), **environment):
    """Everything that the tool writes to a terminal of so many columns, and its status."""
    variables = {"PATH": os.environ["PATH"], "TERM": "xterm", "LC_ALL": "C.UTF-8"}
    variables.update(environment)
    child = pexpect.spawn(
        program[0],
        [*program[1:], *arguments],
        env=variables,
        dimensions=(24, columns),
        timeout=60,
        encoding="utf-8",
    )
    child.expect(pexpect.EOF)
    child.close()
    return child.before.replace("\r\n", "\n"), child.exitstatus


class SlowHandler(http.server.SimpleHTTPRequestHandler):
    """A mirror that takes a while for each file."""

    protocol_version = "HTTP/1.1"

    def do_GET(self):
        time.sleep(0.06)
        body = b"curve\n" * 100
        if self.path.endswith(".xml"):
            with open(f"{EXAMPLES}/Cali-{SERIAL}.xml", "rb") as file:
                body = file.read()
        self.send_response(200)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *arguments):
        pass


def colors():
    listing = ["optics", SERIAL, "--dir", EXAMPLES]
    plain, status = on_terminal(listing, NO_COLOR="1")
    check(status == 0, "optics: " + plain)
    check("\033" not in plain, "NO_COLOR still gives colours: " + repr(plain))
    check("\033" in on_terminal(listing)[0], "a terminal gets no colours")
    check("\033" in on_terminal(listing, NO_COLOR="")[0], "an empty NO_COLOR takes the colours")
    check("\033" not in on_terminal(listing, TERM="dumb")[0], "a dumb terminal gets colours")
    check("\033" not in on_terminal(listing, TERM="")[0], "an empty TERM gives colours")
    unnamed = on_terminal(listing, program=("env", "-u", "TERM", TOOL))[0]
    check("\033" not in unnamed, "a terminal without a name gets colours")
    piped = subprocess.run([TOOL, *listing], env={**os.environ, "TERM": "xterm"}, text=True,
                           capture_output=True, check=True).stdout
    check("FOV" in piped and "\033" not in piped, "a pipe gets colours")
    check("\033" not in on_terminal(listing + ["--color", "never"])[0], "never gives colours")
    always = on_terminal(listing + ["--color", "always"], NO_COLOR="1")[0]
    check("\033" in always, "always gives no colours")


def width():
    doctor = ["doctor", SERIAL, "--dir", EXAMPLES, "--color=never"]

    def shown(columns):
        """In a network namespace of its own: nobody outside is asked."""
        return on_terminal(doctor, columns, ("unshare", "--map-root-user", "--net", TOOL))[0]

    for columns in (30, 60, 72, 100):
        text = shown(columns)
        check("14080045" in text, "no doctor: " + text)
        widest = max(len(line) for line in text.splitlines())
        check(widest <= columns, f"{columns} columns, a line of {widest}: {text}")
    check(shown(60).count("\n") > shown(300).count("\n"), "a narrow terminal has as few lines as a wide one")


def progress():
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), SlowHandler)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    mirror = f"http://127.0.0.1:{server.server_address[1]}"
    fetch = ["fetch", SERIAL, "--from", mirror, "--jobs", "1", "--dir"]

    with tempfile.TemporaryDirectory() as folder:
        begin = time.monotonic()
        text, status = on_terminal(fetch + [folder])
        seconds = time.monotonic() - begin
        check(status == 0, "fetch: " + repr(text))
        draws = re.findall(r"\r(\d+) of (\d+) files, [^\033]*\033\[K", text)
        check(len(draws) > 5, "hardly any progress: " + repr(text))
        # One at once, then ten a second at most.
        check(len(draws) <= 10 * seconds + 1, f"{len(draws)} draws in {seconds} s")
        check("/s, " in text and " left" in text, "no rate or time left: " + repr(text))
        check("fetched Cali" not in text, "a line a file on a terminal: " + repr(text))
        # The line is cleared before the result is written.
        check(re.search(r"\r\033\[K\d+ files fetched, 0 there already\n$", text) is not None,
              "the line is still there: " + repr(text))

    with tempfile.TemporaryDirectory() as folder:
        text, status = on_terminal(fetch + [folder, "--quiet"])
        check(status == 0 and "\r" not in text, "quiet shows progress: " + repr(text))
    with tempfile.TemporaryDirectory() as folder:
        text, status = on_terminal(fetch + [folder], TERM="dumb")
        check(status == 0 and "\033" not in text, "a dumb terminal gets codes: " + repr(text))
        check("fetched Cali" in text, "no line a file on a dumb terminal: " + repr(text))

    with tempfile.TemporaryDirectory() as folder:
        text, status = on_terminal(fetch + [folder], TERM="")
        check(status == 0 and "\033" not in text, "an empty TERM gives codes: " + repr(text))

    with tempfile.TemporaryDirectory() as folder:
        nameless = ("env", "-u", "TERM", TOOL)
        text, status = on_terminal(fetch + [folder], program=nameless)
        check(status == 0 and "\033" not in text, "a nameless terminal gets codes: " + repr(text))

    with tempfile.TemporaryDirectory() as folder:
        text, status = on_terminal(fetch + [folder], columns=0)
        check(status == 0 and "of 41 files" in text, "no progress without a width: " + repr(text))

    interrupted(fetch)
    server.shutdown()


def interrupted(fetch):
    """Ctrl-C ends a fetch with whole files only, and the terminal has no half line."""
    with tempfile.TemporaryDirectory() as folder:
        child = pexpect.spawn(
            TOOL, fetch + [folder], env={"TERM": "xterm"}, timeout=60, encoding="utf-8"
        )
        child.expect(r"\d+ of 41 files")
        child.sendintr()
        child.expect(pexpect.EOF)
        child.close()
        check(child.exitstatus == 3, f"status {child.exitstatus} after Ctrl-C")
        # The line is cleared, then messages have lines of their own.
        ended = re.search(r"\r\033\[K(thermika: |\d+ files? fetched)[^\r]*(\r\n[^\r]+)*\r\n$",
                          child.before)
        check(ended is not None, "a half line is left: " + repr(child.before))
        check("thermika: interrupted: " in child.before, "nothing about Ctrl-C: " + child.before)
        for name in os.listdir(folder):
            size = os.path.getsize(os.path.join(folder, name))
            whole = size == 600 or name.endswith(".xml")
            check(whole and not name.startswith("."), f"{name} has {size} bytes")


def documents():
    """A terminal without UTF-8 could take a byte of a character for a control."""
    with tempfile.TemporaryDirectory() as folder:
        with open(f"{EXAMPLES}/Cali-{SERIAL}.xml", encoding="utf-8") as file:
            description = file.read()
        check("<Text>O53</Text>" in description, "the example has another text")
        with open(f"{folder}/Cali-{SERIAL}.xml", "w", encoding="utf-8") as file:
            file.write(description.replace("<Text>O53</Text>", "<Text>\u00db</Text>"))
        config = ["config", SERIAL, "--dir", folder, "--optics", "53"]
        text, status = on_terminal(config)
        check(status == 0 and "<optics_text>\u00db</optics_text>" in text, "UTF-8: " + repr(text))
        text, status = on_terminal(config, LC_ALL="C")
        check(status == 3 and "(write it to a file: -o FILE)" in text, "C: " + repr(text))
        check("<imager>" not in text and "\u00db" not in text, "C shows it: " + repr(text))
        piped = subprocess.run([TOOL, *config], env={"LC_ALL": "C"}, capture_output=True)
        check(piped.returncode == 0 and b"\xc3\x9b" in piped.stdout, "a pipe: " + repr(piped))


colors()
width()
documents()
progress()
print(f"{checks} checks")
