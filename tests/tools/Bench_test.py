#!/usr/bin/env python3
"""The benchmarks' table must not be printed with holes, nor after a benchmark that failed unseen.

usage: Bench_test.py PROJECT
"""

import importlib.machinery
import importlib.util
import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
PROJECT = pathlib.Path(sys.argv.pop())
LOADER = importlib.machinery.SourceFileLoader("report", str(PROJECT / "bench/report"))
report = importlib.util.module_from_spec(importlib.util.spec_from_loader("report", LOADER))
LOADER.exec_module(report)

OURS = "missing/10/list: checkCaliFiles 9.42 us, 1.14 x system\n"


class Bench(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def result(self, text):
        path = self.folder / "files"
        path.write_text(text)
        return path

    def ratios(self, text):
        return list(report.own_ratios(self.result(text), ["missing/10/list"], ["system"]))

    def test_shows_a_group_that_is_compared(self):
        self.assertEqual(self.ratios(OURS), [OURS.strip()])
        self.assertEqual(self.ratios(f"\x1b[m{OURS}"), [OURS.strip()])  # behind coloured lines

    def test_misses_a_group(self):
        for text in ("", "missing/10/size: checkCaliFiles 9.42 us, 1.14 x system\n"):
            self.assertRaises(SystemExit, self.ratios, text)

    def test_misses_a_peer_and_ours(self):
        for text in ("missing/10/list: checkCaliFiles 9.42 us\n", "missing/10/list: system 9 us\n"):
            self.assertRaises(SystemExit, self.ratios, text)

    def test_misses_a_line(self):
        self.assertEqual(report.lines(self.result("a 1\nb 2\n"), 2), [["a", "1"], ["b", "2"]])
        self.assertRaises(SystemExit, report.lines, self.result("a 1\n"), 2)

    def test_sees_a_benchmark_that_failed(self):
        path = self.result(json.dumps({"benchmarks": [
            {"name": "a", "error_occurred": True, "error_message": "not found"}]}))
        self.assertRaises(SystemExit, report.medians, path, "cpu_time")

    def test_trusts_no_programs_that_hide_a_failure(self):
        (self.folder / "bench").mkdir()
        for body in ("exit 0", "exit 1", "echo 'group/ours: fails on purpose'; exit 0"):
            program = self.folder / "bench/thermika-bench-ratios-fails"
            program.write_text(f"#!/bin/sh\n{body}\n")
            program.chmod(0o755)
            done = subprocess.run([PROJECT / "bench/run", self.folder], capture_output=True,
                                  text=True, check=False)
            self.assertEqual(done.returncode, 1)
            self.assertIn("nothing here can be trusted", done.stderr)

    def fetch_bench(self, companion):
        """What the benchmark of fetching says when `thermika` is that script."""
        names = ["Cali-14080045.xml"] + [f"{number}.dat" for number in range(40)]
        for program, body in (("src/cli/thermika", companion),
                              ("bench/thermika-bench-fetch", f"echo {' '.join(names)}")):
            path = self.folder / program
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(f"#!/bin/sh\n{body}\n")
            path.chmod(0o755)
        (self.folder / "CMakeCache.txt").write_text("THERMIKA_DOWNLOAD_HOST:STRING=files.example\n")
        return subprocess.run([PROJECT / "bench/fetch/Fetch_bench.py", self.folder, "41"],
                              capture_output=True, text=True, check=False)

    def test_takes_no_fetching_that_brings_nothing(self):
        done = self.fetch_bench("exit 0")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("Cali-14080045.xml is not as served", done.stderr)

    def test_takes_no_fetching_that_fails(self):
        done = self.fetch_bench("echo 'there is no server' >&2; exit 3")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("status 3: there is no server", done.stderr)


if __name__ == "__main__":
    unittest.main()
