#!/usr/bin/env python3
"""tools/mutate must not count as killed what no test has noticed.

usage: Mutate_test.py PROJECT
"""

import importlib.machinery
import importlib.util
import pathlib
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
PROJECT = pathlib.Path(sys.argv.pop())
LOADER = importlib.machinery.SourceFileLoader("mutate", str(PROJECT / "tools/mutate"))
mutate = importlib.util.module_from_spec(importlib.util.spec_from_loader("mutate", LOADER))
LOADER.exec_module(mutate)

PASSED = (0, "[ RUN      ] Timer.runs\n[       OK ] Timer.runs (0 ms)\n")
FAILED = (1, "[ RUN      ] Timer.runs\n[  FAILED  ] Timer.runs (0 ms)\n")
TIMED_OUT = (None, "[ RUN      ] Timer.runs\n")


class Scripted(mutate.Worker):
    """A worker whose builds and tests answer as told, one after the other."""

    def __init__(self, answers, uncompilable=()):
        self.tree = pathlib.Path(tempfile.mkdtemp(dir=FOLDER.name))
        (self.tree / "Timer.cpp").write_text("one\n")
        self.slow = ""
        self.answers = list(answers)
        self.uncompilable = uncompilable

    def inside(self, *command, **_):
        if command[0] == "ninja":
            return (1 if command[-1] in self.uncompilable else 0), ""
        if command[0] == "ctest":
            return 0, ""
        return self.answers.pop(0) if self.answers else PASSED

    def programs(self):
        return ["thermika-tests"]

    def verdict(self):
        mutant = {"file": "Timer.cpp", "line": 1, "text": "two"}
        return self.judge(mutant, quick=False)


class Mutate(unittest.TestCase):
    def setUp(self):
        original = mutate.suites
        mutate.suites = lambda unit: "Timer.*"
        self.addCleanup(setattr, mutate, "suites", original)

    def test_counts_a_test_that_fails_twice_as_a_kill(self):
        self.assertEqual(Scripted([FAILED, FAILED]).verdict(), "killed")

    def test_does_not_count_a_test_that_passes_alone(self):
        self.assertEqual(Scripted([FAILED, PASSED]).verdict(), "survived")

    def test_does_not_count_a_single_timeout(self):
        self.assertEqual(Scripted([TIMED_OUT, PASSED]).verdict(), "survived")

    def test_counts_a_test_that_never_ends(self):
        self.assertEqual(Scripted([TIMED_OUT, TIMED_OUT]).verdict(), "killed")

    def test_does_not_count_what_the_tests_cannot_be_compiled_with(self):
        for target in ("thermika-tests", "all"):
            self.assertEqual(Scripted([], {target}).verdict(), "unbuildable")

    def test_asks_the_tests_of_the_folder_first(self):
        for folder, program in mutate.TESTS_OF.items():
            self.assertTrue((PROJECT / folder).is_dir())
            worker = Scripted([], {pathlib.Path(program).name})
            (worker.tree / folder).mkdir(parents=True)
            (worker.tree / folder / "Unit.cpp").write_text("one\n")
            mutant = {"file": f"{folder}/Unit.cpp", "line": 1, "text": "two"}
            self.assertEqual(worker.judge(mutant, quick=False), "unbuildable")

    def test_finds_listed_mutants_that_no_source_gives(self):
        mutate.EQUIVALENT = pathlib.Path(FOLDER.name) / "list"
        known = next(mutate.mutants())["change"]
        mutate.EQUIVALENT.write_text(f"# a reason\n{known}\n")
        sys.argv[1:] = ["--check-list"]
        self.assertEqual(mutate.main(), 0)
        mutate.EQUIVALENT.write_text(f"{known}\nsrc/gone.cpp: a => b\n")
        self.assertEqual(mutate.main(), 1)


if __name__ == "__main__":
    FOLDER = tempfile.TemporaryDirectory()
    unittest.main()
