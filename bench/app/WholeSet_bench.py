#!/usr/bin/env python3
"""Getting a camera's whole set of 41 files: the download against one wget that is told every address,
the copy against the bare find and cp. In private namespaces, with a file server on loopback.

Prints a line for each: its name, the median wall time of ours and of theirs in milliseconds.
By hand: bench/app/WholeSet_bench.py BUILD_DIR [RUNS]
"""

import http.server
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import threading
import time

SERIAL = "14080045"
ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
WORLD = pathlib.Path("/usr/share/set")
MEDIUM = WORLD / f"served/14/1408/Califiles SN{SERIAL}"
FETCH = WORLD / "fetch-calibration"
BYTES = 200_000  # of each file


class Files(http.server.SimpleHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def __init__(self, *arguments):
        super().__init__(*arguments, directory=WORLD / "served")

    def log_message(self, *_):
        pass


def lay_out(build, host):
    for place in ("/usr/share", "/tmp"):
        subprocess.run(["mount", "-t", "tmpfs", "tmpfs", place], check=True)
    MEDIUM.mkdir(parents=True)
    FETCH.write_bytes(build)
    FETCH.chmod(0o755)
    # File names reach the prescribed commands without quotes: no blanks in the optics' texts.
    (MEDIUM / f"Cali-{SERIAL}.xml").write_text(DESCRIPTION.replace("T18 HT", "T18HT"))
    missing = subprocess.run([FETCH, "missing", MEDIUM, SERIAL], stdout=subprocess.PIPE, text=True,
                             check=False).stdout.split()
    for name in missing:
        (MEDIUM / name).write_bytes(os.urandom(BYTES))
    (WORLD / "served/downloadlinks.xml").write_text(
        "<DownloadLinks>\n<Imager>\n<CaliData>\n<Links>\n"
        f"<string>http://{host}</string>\n</Links>\n</CaliData>\n</Imager>\n</DownloadLinks>\n")
    (WORLD / "hosts").write_text(f"127.0.0.1 localhost {host}\n")
    subprocess.run(["mount", "--bind", WORLD / "hosts", "/etc/hosts"], check=True)
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
    (WORLD / "wgetrc").write_text("quiet = on\n")
    os.environ.update(SYSTEM_WGETRC=str(WORLD / "wgetrc"), HOME=str(WORLD))
    (WORLD / "addresses").write_text("".join(
        f"http://{host}/14/1408/Califiles%20SN{SERIAL}/{path.name}\n" for path in MEDIUM.iterdir()))


def milliseconds(command, target):
    shutil.rmtree(target, ignore_errors=True)
    target.mkdir()
    begin = time.monotonic()
    subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
    taken = time.monotonic() - begin
    if {path.name for path in target.iterdir()} != {path.name for path in MEDIUM.iterdir()}:
        sys.exit(f"{command} has not brought the whole set")
    return taken * 1000


def main():
    host, runs = sys.argv[2], int(sys.argv[3])
    lay_out(BUILT, host)
    os.chdir(WORLD)
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 80), Files)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    target = WORLD / "target"
    copies = [word for kind in ("Cali", "Kennlinie") for word in
              ("-o", "-name", f"{kind}-{SERIAL}*", "-exec", "cp", "{}", target, ";")][1:]
    pairs = {
        "download": ([FETCH, "download", target, SERIAL],
                     ["wget", "-i", WORLD / "addresses", "-P", target]),
        "copy": ([FETCH, "copy", target, SERIAL, WORLD / "served/14"],
                 ["find", WORLD / "served/14", *copies]),
    }
    for name, commands in pairs.items():
        times = [[milliseconds(command, target) for command in commands] for _ in range(runs)]
        ours, theirs = (statistics.median(column) for column in zip(*times))
        print(f"{name} {ours:.1f} {theirs:.1f}")
    server.shutdown()


if __name__ == "__main__":
    if os.environ.get("THERMIKA_BENCH_INSIDE") != "yes":
        os.environ["THERMIKA_BENCH_INSIDE"] = "yes"
        build_dir = pathlib.Path(sys.argv[1]).resolve()
        cache = (build_dir / "CMakeCache.txt").read_text()
        found = re.search(r"^THERMIKA_DOWNLOAD_HOST:STRING=(.*)$", cache, re.M)
        os.execvp("unshare", ["unshare", "--user", "--map-root-user", "--mount", "--net",
                              __file__, str(build_dir), found.group(1), *(sys.argv[2:] or ["5"])])
    DESCRIPTION = (ROOT / f"examples/Cali-{SERIAL}.xml").read_text()
    BUILT = pathlib.Path(sys.argv[1], "examples/fetch-calibration").read_bytes()
    main()
