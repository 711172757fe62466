#!/usr/bin/python3 -IB
"""Measures `thermika fetch` over a link of 10 ms round trip against the manager's own download, wget
and curl, and the fetch library's memory. Prints medians, ratios and goals, and fails not for a bad
figure but when a contestant fails or leaves a file out, or when that would not be seen.

usage: Fetch_bench.py BUILD_DIR [FILES...]
  BUILD_DIR  holds thermika and the benchmarks
  FILES      how many, of 41 and 1001; both when not given
THERMIKA_BENCH_FETCH_RUNS (5) says how often each is measured; with 1,001 files those who fetch one
file after another are measured once.

Runs in private namespaces. The server is the one of the tests; it waits 10 ms before a connection's
first answer and before every answer, whoever asks.

`thermika fetch` has to ask for the links document, then for the description, and only then knows
what else there is. "The same chain" asks in that order with curl, which has to connect anew each
time; "given the list" spares wget and curl the first two questions, of 41 files 2 of 13 round trips.
"""

import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

DELAY_MS = "10"
SERIAL = "14080045"
DESCRIPTION = f"Cali-{SERIAL}.xml"
FILE_BYTES = 2000
INSIDE = "THERMIKA_BENCH_INSIDE"
SETS = {41: (1, 1, 20), 1001: (10, 10, 5)}  # files: optics, ranges, frame rates
OURS, FIFTY = "thermika fetch", "thermika fetch --jobs 50"
CURL_CHAIN, CURL_LIST, CURL_FIFTY = "curl chain", "curl list", "curl 50"
WGET, MANAGER = "wget", "manager"
PEERS = (
    ("4 at a time: curl --parallel-max 4, the same chain", CURL_CHAIN, 1.1),
    ("4 at a time: curl --parallel-max 4, given the list", CURL_LIST, 1.1),
    ("50 at a time: curl --parallel, given the list", CURL_FIFTY, None),
    ("4 at a time: wget -i, given the list", WGET, None),
    ("4 at a time: downloadCalibration()", MANAGER, 0.15),
)
MOST_SECONDS = 300  # of one contestant; a link that hangs, not a slow machine
CURL = ["curl", "-q", "--silent", "--show-error", "--fail"]


def description(optics, ranges, rates):
    text = "<CaliData>\n<Temperature>\n<Optics>\n"
    for fov in range(optics):
        text += f"<OpticsDef><FOV>{fov + 10}</FOV>\n<Text></Text>\n<TempRanges>\n"
        for low in range(ranges):
            text += f"<TemperatureRange><TempLo>{low}</TempLo>\n<TempHi>{low + 100}</TempHi>\n"
            text += "<Framerates>\n"
            for rate in range(rates):
                text += f"<Framerate><FR>{rate + 20}</FR></Framerate>\n"
            text += "</Framerates>\n</TemperatureRange>\n"
        text += "</TempRanges>\n</OpticsDef>\n"
    return text + "</Optics>\n</Temperature>\n</CaliData>\n"


def enter_namespaces():
    if INSIDE not in os.environ:
        os.environ[INSIDE] = "1"
        os.execvp("unshare", ["unshare", "--map-root-user", "--mount", "--net", sys.executable,
                              "-IB", *sys.argv])
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)


def cover(target, text, work):
    path = work / pathlib.Path(target).name
    path.write_text(text)
    if os.path.exists(target):
        subprocess.run(["mount", "--bind", path, target], check=True)


class Failure(SystemExit):
    """A contestant did not do what is measured."""


class Bench:
    def __init__(self, build, host, work):
        self.companion = build / "src/cli/thermika"
        self.program = build / "bench/thermika-bench-fetch"
        self.host, self.work = host, work
        self.served = work / "served"
        self.folder = self.served / SERIAL[:2] / SERIAL[:4] / f"Califiles SN{SERIAL}"
        self.base = f"http://{host}/{SERIAL[:2]}/{SERIAL[:4]}/Califiles%20SN{SERIAL}"
        self.target = work / "target"

    def serve(self, files):
        shutil.rmtree(self.served, ignore_errors=True)
        self.folder.mkdir(parents=True)
        (self.served / "downloadlinks.xml").write_text(
            "<DownloadLinks>\n<Imager><CaliData><Links>\n"
            f"<string>http://{self.host}</string>\n"
            "</Links></CaliData></Imager>\n</DownloadLinks>\n"
        )
        (self.folder / DESCRIPTION).write_text(description(*SETS[files]))
        listed = subprocess.run([self.program, "names", self.folder], check=True, text=True,
                                stdout=subprocess.PIPE)
        self.names = listed.stdout.split()
        if len(set(self.names)) != files:
            sys.exit(f"{len(set(self.names))} files instead of {files}")
        for name in self.names[1:]:
            (self.folder / name).write_bytes(name.encode().ljust(FILE_BYTES, b"x"))
        (self.work / "addresses").write_text("".join(f"{self.base}/{name}\n"
                                                     for name in self.names))
        for config, names in (("all", self.names), ("needed", self.names[1:])):
            (self.work / config).write_text("".join(
                f'url = "{self.base}/{name}"\noutput = "{self.target}/{name}"\n'
                for name in names))

    def commands(self):
        ours = [self.companion, "--quiet", "--dir", self.target, "fetch", SERIAL]
        four = ["--parallel", "--parallel-max", "4"]
        curl = ' '.join(CURL)
        chain = (f"{curl} -o links http://{self.host}/downloadlinks.xml && "
                 f"{curl} -o target/{DESCRIPTION} {self.base}/{DESCRIPTION} && "
                 f"{curl} {' '.join(four)} --config needed")
        return {
            OURS: ours,
            CURL_CHAIN: ["sh", "-c", chain],
            CURL_LIST: [*CURL, *four, "--config", "all"],
            FIFTY: [*ours, "--jobs", "50"],
            CURL_FIFTY: [*CURL, "--parallel", "--config", "all"],
            WGET: ["wget", "--no-config", "--quiet", "-P", self.target, "-i", "addresses"],
            MANAGER: [self.program, "manager", self.target],
        }

    def run(self, command):
        """Seconds that it takes; raises when it does not bring every file as it is served."""
        shutil.rmtree(self.target, ignore_errors=True)
        self.target.mkdir()
        begin = time.monotonic()
        done = subprocess.run(command, check=False, cwd=self.work, timeout=MOST_SECONDS,
                              stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                              stderr=subprocess.PIPE)
        took = time.monotonic() - begin
        if done.returncode != 0:
            raise Failure(f"{command}: status {done.returncode}: {done.stderr.decode()}")
        for name in self.names:
            path = self.target / name
            if not path.is_file() or path.read_bytes() != (self.folder / name).read_bytes():
                raise Failure(f"{command}: {name} is not as served")
        return took

    def demand_that_doing_nothing_is_seen(self):
        for nothing in (["true"], ["false"], [*CURL, f"{self.base}/none"]):
            try:
                self.run(nothing)
            except Failure:
                continue
            sys.exit(f"{nothing} counts as a fetching: nothing here can be trusted")

    def measure(self, files, runs):
        self.serve(files)
        self.demand_that_doing_nothing_is_seen()
        times = {name: [] for name in self.commands()}
        for number in range(runs):
            for name, command in self.commands().items():
                if number == 0 or files < 1000 or name not in (WGET, MANAGER):
                    times[name].append(self.run(command))
        title = f"{files} files of {FILE_BYTES} bytes, {DELAY_MS} ms"
        print(f"{title:64} {'ours':>9} {'theirs':>9}     {'ratio':>6} {'goal':>6}")
        for name, theirs, goal in PEERS:
            ours = statistics.median(times[FIFTY if theirs == CURL_FIFTY else OURS])
            median = statistics.median(times[theirs])
            missed = "" if goal is None else f"{goal:6.2f}" + "  missed" * (ours / median > goal)
            print(f"{name:64} {ours:9.3f} {median:9.3f} s   {ours / median:6.3f} {missed}".rstrip(),
                  flush=True)

    def memory(self):
        for mebibytes in (1, 60):
            (self.folder / "large.dat").write_bytes(b"x" * (mebibytes << 20))
            shutil.rmtree(self.target, ignore_errors=True)
            peak = subprocess.run([self.program, "one", self.target], check=True, text=True,
                                  stdout=subprocess.PIPE).stdout
            if (self.target / "large.dat").stat().st_size != mebibytes << 20:
                sys.exit("large.dat is not as served")
            print(f"peak memory of a fetching, one file of {mebibytes} MiB: {int(peak)} kB")


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    enter_namespaces()
    build = pathlib.Path(sys.argv[1]).resolve()
    cache = (build / "CMakeCache.txt").read_text()
    host = re.search("^THERMIKA_DOWNLOAD_HOST:STRING=(.+)$", cache, re.MULTILINE).group(1)
    server = pathlib.Path(__file__).resolve().parents[2] / "tests/fetch/support/hostile-server.py"
    runs = int(os.environ.get("THERMIKA_BENCH_FETCH_RUNS", "5"))
    os.environ.update(no_proxy="*", NO_PROXY="*")
    with tempfile.TemporaryDirectory() as folder:
        work = pathlib.Path(folder)
        cover("/etc/hosts", f"127.0.0.1 localhost {host}\n", work)
        cover("/etc/nsswitch.conf", "hosts: files\n", work)
        for name in ("faults", "requests"):
            (work / name).touch()
        with subprocess.Popen(
            [sys.executable, "-IB", server, work / "served", work / "faults", work / "requests",
             DELAY_MS],
            stdout=subprocess.PIPE,
        ) as running:
            try:
                if not running.stdout.readline():
                    sys.exit("the server does not listen")
                bench = Bench(build, host, work)
                for files in [int(each) for each in sys.argv[2:]] or SETS:
                    bench.measure(files, runs)
                bench.memory()
            finally:
                running.kill()


main()
