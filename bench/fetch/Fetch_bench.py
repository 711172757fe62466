#!/usr/bin/python3 -IB
"""Measures the fetch library over a link of 10 ms round trip against the manager's own download,
wget and curl, and its memory. Prints medians and ratios; decides nothing, but fails when a run
does not bring every file.

usage: Fetch_bench.py BUILD_DIR HOST [FILES...]
  HOST  the download host that the build knows
  FILES  how many, of 41 and 1001; both when not given
THERMIKA_BENCH_FETCH_RUNS (3) says how often each is measured.

Runs in private namespaces. The server is the one of the tests; it waits 10 ms before a connection's
first answer and before every answer, whoever asks.
"""

import os
import pathlib
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


class Bench:
    def __init__(self, program, host, work):
        self.program, self.host, self.work = program, host, work
        self.served = work / "served"
        self.links = f"http://{host}/downloadlinks.xml"
        self.folder = self.served / SERIAL[:2] / SERIAL[:4] / f"Califiles SN{SERIAL}"
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
        base = f"http://{self.host}/{SERIAL[:2]}/{SERIAL[:4]}/Califiles%20SN{SERIAL}/"
        (self.work / "addresses").write_text("".join(f"{base}{name}\n" for name in self.names))
        (self.work / "config").write_text(
            "".join(f'url = "{base}{name}"\noutput = "{self.target}/{name}"\n'
                    for name in self.names)
        )

    def commands(self):
        curl = ["curl", "-q", "--silent", "--show-error", "--fail", "--config",
                self.work / "config", "--parallel"]
        return {
            "thermika::fetch": [self.program, "library", self.target, self.links],
            "thermika::fetch, 50 jobs": [self.program, "library", self.target, self.links, "50"],
            "downloadCalibration()": [self.program, "manager", self.target],
            "wget -i": ["wget", "--no-config", "--quiet", "-P", self.target, "-i",
                        self.work / "addresses"],
            "curl --parallel-max 4": [*curl, "--parallel-max", "4"],
            "curl --parallel": curl,
        }

    def run(self, command):
        shutil.rmtree(self.target, ignore_errors=True)
        self.target.mkdir()
        begin = time.monotonic()
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        took = time.monotonic() - begin
        for name in self.names:
            if (self.target / name).read_bytes() != (self.folder / name).read_bytes():
                sys.exit(f"{command}: {name} is not as served")
        return took

    def measure(self, files, runs):
        self.serve(files)
        times = {name: [] for name in self.commands()}
        for _ in range(runs):
            for name, command in self.commands().items():
                times[name].append(self.run(command))
        medians = {name: statistics.median(each) for name, each in times.items()}
        print(f"{files} files of {FILE_BYTES} bytes, {DELAY_MS} ms, medians of {runs}:", flush=True)
        for name, median in medians.items():
            ratio = medians["thermika::fetch"] / median
            print(f"  {name:26} {median:8.3f} s   thermika::fetch takes {ratio:5.2f} x of it", flush=True)

    def memory(self):
        for mebibytes in (1, 60):
            (self.folder / "large.dat").write_bytes(b"x" * (mebibytes << 20))
            shutil.rmtree(self.target, ignore_errors=True)
            peak = subprocess.run([self.program, "one", self.target, self.links], check=True,
                                  text=True, stdout=subprocess.PIPE).stdout
            print(f"peak memory, one file of {mebibytes} MiB: {int(peak)} kB")


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    enter_namespaces()
    program = pathlib.Path(sys.argv[1]).resolve() / "bench" / "thermika-bench-fetch"
    server = pathlib.Path(__file__).resolve().parents[2] / "tests/fetch/support/hostile-server.py"
    runs = int(os.environ.get("THERMIKA_BENCH_FETCH_RUNS", "3"))
    with tempfile.TemporaryDirectory() as folder:
        work = pathlib.Path(folder)
        cover("/etc/hosts", f"127.0.0.1 localhost {sys.argv[2]}\n", work)
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
                bench = Bench(program, sys.argv[2], work)
                for files in [int(each) for each in sys.argv[3:]] or SETS:
                    bench.measure(files, runs)
                bench.memory()
            finally:
                running.kill()


main()
