#!/usr/bin/env python3
"""tools/coverage_gaps.py, sabotaged: it must notice what no test reaches, a list that is out of date and
a report without anything in it.

usage: CoverageGaps_test.py SOURCE_DIR
"""

import json
import pathlib
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(sys.argv[1])
SOURCE = "src/cli/WriteAll.cpp"
TEXTS = (ROOT / SOURCE).read_text().splitlines()
LOOP = next(i for i, text in enumerate(TEXTS, 1) if text.strip() == "while (!bytes.empty()) {")


def status(folder, count, branches, listed, lines=True):
    """Of a report whose one line was reached so often, and whose branches were."""
    line = {"line_number": LOOP, "count": count, "branches": [{"count": each} for each in branches],
            "gcovr/noncode": False}
    report, explained = folder / "report.json", folder / "list"
    report.write_text(json.dumps({"files": [{"file": SOURCE, "lines": [line] * lines}]}))
    explained.write_text(f"# Why.\n{SOURCE}\n    {listed}\n" if listed else "")
    return subprocess.run([ROOT / "tools/coverage_gaps.py", report, explained, "src/cli/"],
                          stdout=subprocess.DEVNULL).returncode


with tempfile.TemporaryDirectory() as name:
    place = pathlib.Path(name)
    text = TEXTS[LOOP - 1].strip()
    for what, expected, found in (
            ("reached", 0, status(place, 3, [1, 2], "")),
            ("a line that no test reaches", 1, status(place, 0, [0, 0], "")),
            ("a branch that no test reaches", 1, status(place, 3, [3, 0], "")),
            ("a line with its reason", 0, status(place, 0, [0, 0], text)),
            ("a branch with its reason", 0, status(place, 3, [3, 0], text)),
            ("a reason for a line that is gone", 1, status(place, 3, [1, 2], "no such line")),
            ("an empty report", 1, status(place, 3, [1, 2], "", lines=False))):
        if found != expected:
            sys.exit(f"{what}: status {found}, not {expected}")
