#!/usr/bin/env python3
"""The companion's part of tools/faults: every command, with one system call failing in whichever
thread makes it.

Whatever fails, the companion answers 0 and has done all, or 3 with a message; checks may also answer
1 when they name what could not be read. Files in the directory are whole old or whole new ones, and
what is left beside them has the name of a part file.
"""

import fnmatch
import pathlib
import shutil
import subprocess

from injection import (CALI, FILES, SERIAL, SHARE, WORLD, Program, Tally, empty, lay_out_bus,
                       serve)

MEDIUM = WORLD / "medium"
DOCUMENT = WORLD / "document.xml"
PARTS = (".thermika-fetch-*.part", ".thermika-new-*.part")
OLD_DATA = "old\n"
# What the C library and libcurl do without; interruptions where signals have handlers.
SURVIVED = ("close:", "munmap:")
INTERRUPTED = ("read:error=EINTR:", "write:error=EINTR:", "fsync:error=EINTR:", "poll:error=EINTR:",
               "recvfrom:error=EINTR:")
# Half of what is offered today; with fewer, something is no longer tried.
LEAST_FAULTS = 3000
THIN = 6  # on two cores a minute


def is_part(path):
    return any(fnmatch.fnmatch(pathlib.Path(path).name, part) for part in PARTS)


class Command:
    """One command line, the files before it, and what has to be there in the end."""

    def __init__(self, path, name, arguments, before, after, may_say_no=False, doubt=None,
                 tells_times=False, answers_by_status=False):
        self.name, self.before, self.after = name, before, after
        self.may_say_no, self.instead = may_say_no, {}  # files that may come instead, by path
        self.doubt = doubt  # the word of an answer about what could not be read
        self.tells_times = tells_times  # and the like, which differ from run to run
        options = ["--dir", str(CALI)] + ([] if answers_by_status else ["--quiet"])
        self.program = Program(path, [*options, *arguments], begins="rt_sigaction(SIGPIPE",
                               threads=True)

    def files(self):
        places = [*CALI.iterdir(), *([DOCUMENT] if DOCUMENT.exists() else []),
                  *WORLD.glob(".thermika-*")]
        return {str(path): path.read_text() for path in places}

    def run(self, fault=None):
        shutil.rmtree(CALI, ignore_errors=True)
        CALI.mkdir(parents=True)
        for path in (DOCUMENT, *WORLD.glob(".thermika-*")):
            path.unlink(missing_ok=True)
        for path, text in self.before.items():
            pathlib.Path(path).write_text(text)
        return self.program.run([fault] if fault else [])

    def settle(self):
        """Without a fault: what has to come."""
        status, self.output, log = self.run()
        if status != 0 or (self.after is not None and self.files() != self.after):
            raise SystemExit(f"unhindered, {self.name} answers {status} and leaves "
                             f"{sorted(self.files())}: {log}")
        self.after = self.files()

    def outcome(self, fault):
        """What came of one run; "" when the fault did not occur."""
        try:
            status, output, log = self.run(fault)
        except subprocess.TimeoutExpired:
            return "!hangs"
        if not self.program.has_met_fault():
            return ""
        files = self.files()
        for path in [path for path in files if is_part(path)]:
            del files[path]
            if not fault.startswith("unlink"):
                return f"!{path} is left"
        for path, text in files.items():
            if text not in [wanted.get(path) for wanted in
                              (self.before, self.after, self.instead)]:
                return f"!{path} is neither old nor new: {len(text)} bytes"
        if any(path not in files for path in self.before):
            return "!an old file is gone"
        if status == 0:
            is_whole = output == self.output or (self.tells_times and output)
            if files in (self.after, {**self.after, **self.instead}) and is_whole:
                return "all of it and status 0"
            if self.doubt and self.doubt in output:
                return "status 0 and a word about what could not be read"
            return f"!status 0 with {sorted(files)}: {output}"
        if fault.startswith(SURVIVED + INTERRUPTED * self.name.startswith("fetch")):
            return f"!status {status} after a failure that changes nothing: {log}"
        if status == 1 and self.may_say_no and (output or log):
            return "status 1 and what could not be read"
        if status == 3 and (log.startswith("thermika: ") or fault.startswith("write:")):
            return "status 3 and a message"
        return f"!status {status}: {log or output}"


def commands(path, host):
    new = {str(CALI / name): text for name, text in FILES.items()}
    description = {str(CALI / f"Cali-{SERIAL}.xml"): FILES[f"Cali-{SERIAL}.xml"]}
    old = {name: text if name in description else OLD_DATA for name, text in new.items()}
    fetch = ["fetch", SERIAL, "--jobs", "1", "--retries", "0", "--timeout", "2"]
    config = ["config", SERIAL, "-o", str(DOCUMENT), "--force"]
    yield Command(path, "fetch --all from a server", [*fetch, "--all"], old, new)
    yield Command(path, "fetch from a mirror", [*fetch, "--from", f"http://{host}/"], {}, new)
    yield Command(path, "fetch from a folder", [*fetch, "--from", str(MEDIUM)], {}, new)
    yield Command(path, "files", ["files", SERIAL], new, new, may_say_no=True)
    yield Command(path, "optics", ["optics", SERIAL], new, new, may_say_no=True, doubt="missing")
    yield Command(path, "cameras", ["cameras", "--serials"], {}, {}, may_say_no=True,
                  answers_by_status=True)
    yield Command(path, "online", ["online"], {}, {}, may_say_no=True, tells_times=True,
                  answers_by_status=True)
    yield Command(path, "doctor", ["doctor"], new, new, may_say_no=True, tells_times=True)
    yield Command(path, "completion", ["completion", "bash"], {}, {})
    # Without a description the document has defaults; such a one may also come when it cannot be read.
    plain = Command(path, "config", config, {str(DOCUMENT): "old"}, None)
    plain.settle()
    write = Command(path, "config -o", config, {**description, str(DOCUMENT): "old"}, None)
    write.settle()
    write.instead = plain.after
    yield write
    document = {**description, str(DOCUMENT): write.after[str(DOCUMENT)]}
    yield Command(path, "validate", ["validate", str(DOCUMENT), SERIAL], document, document,
                  may_say_no=True)


def judge_companion(path, host, thin):
    empty(SHARE)
    lay_out_bus(with_camera=True)
    CALI.mkdir(parents=True)
    MEDIUM.mkdir()
    for name, text in FILES.items():
        (MEDIUM / name).write_text(text)
    tally = Tally("the companion", thin * THIN, LEAST_FAULTS)
    server = serve(host)
    try:
        for command in commands(path, host):
            command.settle()
            for fault in command.program.faults():
                if tally.is_wanted():
                    outcome = command.outcome(fault)
                    if outcome:
                        tally.judge(f"{command.name} {fault}", outcome)
    finally:
        server.kill()
        server.wait()
    return tally.show()
