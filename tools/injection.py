#!/usr/bin/env python3
"""What tools/faults needs whatever it looks at: programs that run under strace, which lets one of
their calls fail; the faults that they offer; a count of what came of them; and a file server. Not a
program of its own.
"""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
SERIAL = "14080045"
RUN_SECONDS = 20  # a hang, not a slow machine

SHARE = pathlib.Path("/usr/share")
WORLD = SHARE / "faults"  # ours, the product sees nothing of it
CALI = SHARE / "libthermika/cali"

# What each call can give, by its manual page and what file systems and buses do; a number is no error.
ERRORS = {
    "chdir": "EIO ENOMEM EACCES ENOENT ENOTDIR",
    "openat": "EIO ENOMEM EACCES EMFILE ENFILE EINTR ENOENT ELOOP ENODEV",
    "newfstatat": "EIO ENOMEM EACCES ENOENT",
    "fstat": "EIO ENOMEM",
    "lstat": "EIO ENOMEM EACCES ENOENT",
    "getdents64": "EIO ENOENT",
    "read": "EIO EINTR ENODEV ENOMEM EISDIR",
    "lseek": "EINVAL ESPIPE",
    "write": "ENOSPC EPIPE EIO EINTR EDQUOT EBADF EFBIG",
    "close": "EIO EINTR ENOSPC",
    "brk": "0",  # the kernel gives no error but the old end, and any other number counts as success
    "mmap": "ENOMEM",
    "munmap": "EINVAL ENOMEM",
    "mremap": "ENOMEM",
    "mprotect": "ENOMEM",
    "fcntl": "EINVAL",
    "ioctl": "ENOTTY EIO",
    "rt_sigaction": "EINVAL",
    "rt_sigprocmask": "EINVAL",
    "prlimit64": "EPERM",
    "mkdir": "EIO EACCES ENOSPC EROFS ENOENT EMLINK",
    "unlink": "EIO EACCES EBUSY EROFS ENOENT",
    "getuid": "",
    "geteuid": "",
    "pipe2": "EMFILE ENFILE",
    "clone": "EAGAIN ENOMEM",
    "clone3": "EAGAIN ENOMEM ENOSYS EPERM",
    "vfork": "EAGAIN ENOMEM",
    "wait4": "ECHILD EINTR",
    # What only the companion and libcurl call.
    "access": "EACCES",
    "bind": "EADDRINUSE",
    "connect": "ECONNREFUSED ENETUNREACH ETIMEDOUT EADDRNOTAVAIL",
    "eventfd2": "EMFILE",
    "fchmod": "EIO EPERM EROFS",
    "flock": "ENOLCK EAGAIN EINTR",
    "fsync": "EIO ENOSPC EINTR",
    "getcwd": "ENOENT",
    "getpeername": "ENOTCONN ENOBUFS",
    "getrandom": "EINTR ENOSYS",
    "getsockname": "ENOBUFS",
    "getsockopt": "ENOPROTOOPT",
    "link": "EEXIST EIO ENOSPC",
    "madvise": "EAGAIN",
    "mkdirat": "EIO EACCES ENOSPC EROFS ENOENT EMLINK",
    "poll": "EINTR ENOMEM",
    "pread64": "EIO",
    "readlink": "EINVAL EACCES",
    "recvfrom": "ECONNRESET ETIMEDOUT EINTR",
    "recvmsg": "ENOMEM",
    "rename": "EIO ENOSPC EACCES EROFS",
    "renameat": "EIO ENOSPC EACCES EROFS",
    "rt_sigpending": "",
    "rt_sigtimedwait": "EAGAIN",
    "sendmmsg": "ENOBUFS",
    "sendto": "EPIPE ECONNRESET EINTR",
    "setsockopt": "ENOPROTOOPT",
    "socket": "EMFILE ENFILE ENOBUFS EACCES",
    "socketpair": "EMFILE",
    "statfs": "EIO ENOSYS",
    "statx": "EIO ENOMEM EACCES ENOENT",
    "sysinfo": "EFAULT",
    "unlinkat": "EIO EACCES EROFS ENOENT",
}
# Waking nobody; leaving; marking where we are; asking who we are; beginning a thread's life.
CANNOT_FAIL = {"futex", "exit", "exit_group", "getpid", "getppid", "gettid", "geteuid", "getuid",
               "rseq", "set_robust_list", "sched_yield", "uname"}

DESCRIPTION = """<CaliData>
  <Temperature>
    <Optics>
      <OpticsDef>
        <FOV>33</FOV>
        <Text>M</Text>
        <TempRanges>
          <TemperatureRange>
            <TempLo>-20</TempLo>
            <TempHi>100</TempHi>
            <Framerates>
              <Framerate><FR>27</FR></Framerate>
            </Framerates>
          </TemperatureRange>
        </TempRanges>
      </OpticsDef>
    </Optics>
  </Temperature>
</CaliData>
"""
FILES = {  # all that the library's camera needs, each of another size
    f"Cali-{SERIAL}.xml": DESCRIPTION,
    f"Cali-{SERIAL}-33-M-M20-100-27.dat": "data\n" * 2000,
    f"Kennlinie-{SERIAL}-33-M-M20-100-27.prn": "a curve\n" * 100,
}


def empty(directory):
    for entry in pathlib.Path(directory).iterdir():
        if entry == WORLD:
            continue
        if entry.is_dir() and not entry.is_symlink():
            shutil.rmtree(entry)
        else:
            entry.unlink()


def lay_out_bus(with_camera):
    """Over /sys, which is ours."""
    empty("/sys")
    devices = pathlib.Path("/sys/bus/usb/devices")
    devices.mkdir(parents=True)
    hub = {"idVendor": "1d6b", "idProduct": "0002", "serial": "0000:00:14.0"}
    entries = {"usb1": hub, "1-0:1.0": {}, "1-1": {"idVendor": "046d", "idProduct": "c31c"}}
    if with_camera:
        entries["1-2"] = {"idVendor": "0403", "idProduct": "de37", "serial": SERIAL}
    for name, attributes in entries.items():
        target = pathlib.Path("/sys/devices") / name
        target.mkdir(parents=True)
        (devices / name).symlink_to(f"../../../devices/{name}")
        for attribute, value in attributes.items():
            (target / attribute).write_text(value + "\n")


class Program:
    """What is traced, with what it is started with."""

    def __init__(self, path, arguments, begins, ends="exit_group", threads=False):
        self.command = [path, *arguments]
        self.begins, self.ends = begins, ends  # the calls that enclose those to fail
        self.options = ["-f"] if threads else []  # with all threads, and processes
        self.trace = WORLD / "trace"

    def run(self, inject=()):
        """(status, standard output, standard error); the status is negative for a signal."""
        options = [*self.options, "-o", self.trace, "-e", "signal=none"]
        for fault in inject:
            options += ["-e", f"inject={fault}"]
        # To files: what arrived there is what a user would have.
        with tempfile.TemporaryFile(dir=WORLD) as output, tempfile.TemporaryFile(dir=WORLD) as log:
            run = subprocess.Popen(["strace", *options, *self.command], stdin=subprocess.DEVNULL,
                                   stdout=output, stderr=log, start_new_session=True)
            try:
                run.wait(RUN_SECONDS)
            except subprocess.TimeoutExpired:
                os.killpg(run.pid, signal.SIGKILL)
                run.wait()
                raise
            output.seek(0)
            log.seek(0)
            text = log.read().decode()
            if text.startswith("strace: "):
                sys.exit(text)
            return run.returncode, output.read().decode(), text

    def faults(self):
        """Every fault to inject, by the calls that the last run made between the two marks. Threads
        count their calls for themselves, so those that the first one makes before stay as they are.
        """
        counts, before, is_inside, faults = {}, {}, False, []
        for line in self.trace.read_text().splitlines():
            match = re.match(r"(\d+ +)?((\w+)\(.*)", line)
            if not match:
                continue
            thread, call, name = match.groups()
            is_first = thread in {None, *list(counts)[:1]} or not counts
            mine = counts.setdefault(thread, {})
            mine[name] = mine.get(name, 0) + 1
            if is_first:
                if is_inside and call.startswith(self.ends):
                    return list(dict.fromkeys(faults))
                is_inside = is_inside or call.startswith(self.begins)
                if not is_inside:
                    before[name] = mine[name]
            if not is_inside or name in CANNOT_FAIL or mine[name] <= before.get(name, 0):
                continue
            if name not in ERRORS:
                sys.exit(f"which errors can {name} give? list them in ERRORS")
            for error in ERRORS[name].split():
                kind = "retval" if error.isdigit() else "error"
                faults.append(f"{name}:{kind}={error}:when={mine[name]}")
        sys.exit(f"{self.command} never calls {self.ends if is_inside else self.begins}: "
                 "nothing can be injected")

    def has_met_fault(self):
        return "(INJECTED)" in self.trace.read_text()


class Tally:
    def __init__(self, whose, thin, least):
        self.whose, self.thin, self.least = whose, thin, least
        self.met, self.judged, self.failures = 0, 0, []
        self.outcomes = {}

    def is_wanted(self):
        self.met += 1
        return self.met % self.thin == 0

    def judge(self, what, outcome):
        """`outcome` is a complaint when it begins with "!"."""
        self.judged += 1
        if outcome.startswith("!"):
            self.failures.append(f"{what}: {outcome[1:]}")
        else:
            self.outcomes[outcome] = self.outcomes.get(outcome, 0) + 1

    def show(self):
        good = "".join(f", {count} times {outcome}" for outcome, count in self.outcomes.items())
        print(f"{self.whose}: {self.judged} of {self.met} faults injected{good}, "
              f"{len(self.failures)} times none of that", flush=True)
        for failure in self.failures:
            print(f"FAILED {failure}")
        if self.met < self.least or self.judged == 0:
            print(f"FAILED {self.whose} offers {self.met} faults, at least {self.least} are "
                  f"expected, and {self.judged} were tried")
            return False
        return not self.failures


def cover_in_etc(name, text):
    (WORLD / name).write_text(text)
    if pathlib.Path("/etc", name).exists():
        subprocess.run(["mount", "--bind", WORLD / name, f"/etc/{name}"], check=True)
        return
    # A bare system has no such file to mount over: cover /etc with links to all it holds.
    covered, links = WORLD / f"covered-etc-{name}", WORLD / f"etc-{name}"
    covered.mkdir()
    links.mkdir()
    subprocess.run(["mount", "--rbind", "/etc", covered], check=True)
    for entry in covered.iterdir():
        (links / entry.name).symlink_to(entry)
    (links / name).symlink_to(WORLD / name)
    subprocess.run(["mount", "--bind", links, "/etc"], check=True)


def serve(host):
    files = WORLD / f"served/{SERIAL[:2]}/{SERIAL[:4]}/Califiles SN{SERIAL}"
    files.mkdir(parents=True, exist_ok=True)
    for name, text in FILES.items():
        (files / name).write_text(text)
    (WORLD / "served/downloadlinks.xml").write_text(
        "<DownloadLinks>\n<Imager>\n<CaliData>\n<Links>\n"
        f"<string>http://{host}</string>\n</Links>\n</CaliData>\n</Imager>\n</DownloadLinks>\n")
    cover_in_etc("hosts", f"127.0.0.1 localhost {host}\n")
    cover_in_etc("nsswitch.conf", "hosts: files\n")
    # wget keeps quiet and does not see this machine's settings.
    (WORLD / "wgetrc").write_text("quiet = on\ntries = 2\nwaitretry = 0\n")
    os.environ.update(SYSTEM_WGETRC=str(WORLD / "wgetrc"), HOME=str(WORLD), LC_ALL="C")
    for name in ("WGETRC", "http_proxy"):
        os.environ.pop(name, None)
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
    subprocess.run(["ip", "route", "replace", "default", "dev", "lo"], check=True)
    for name in ("faults", "requests"):
        (WORLD / name).touch()
    server = subprocess.Popen(
        [sys.executable, "-I", "-B", WORLD / "file-server.py", WORLD / "served", WORLD / "faults",
         WORLD / "requests"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    if not server.stdout.readline():
        sys.exit("the file server does not listen")
    return server
