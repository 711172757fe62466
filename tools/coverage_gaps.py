#!/usr/bin/env python3
"""Names every line and branch of some sources that no test has reached and that is not listed with a
reason. Not a program of its own but for tools/coverage.

usage: tools/coverage_gaps.py REPORT LIST PATH...
       REPORT: gcovr's, in JSON; LIST: tools/coverage-unreached; PATH: the beginning of sources' names
status: 0 nothing is missing, 1 something is, or the list names what is not there, or nothing was looked at
"""

import collections
import json
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def read_list(path):
    """The text of every line that may stay unreached, by its source."""
    listed, source = collections.defaultdict(set), None
    for line in path.read_text().splitlines():
        text = line.strip()
        if not text or text.startswith("#"):
            continue
        if line.startswith("src/"):
            source = text
        elif source is None:
            sys.exit(f"{path}: {text} belongs to no source")
        else:
            listed[source].add(text)
    return listed


def unreached(lines):
    """What is unreached of one source: "line" or "branch" by line number; and how many were looked
    at."""
    counts, branches = collections.Counter(), collections.defaultdict(list)
    for line in lines:
        if line.get("gcovr/noncode"):
            continue
        counts[line["line_number"]] += line["count"]
        branches[line["line_number"]] += [branch["count"] for branch in line["branches"]]
    gaps = {}
    for number, count in counts.items():
        if count == 0:
            gaps[number] = "line"
        elif 0 in branches[number]:
            gaps[number] = "branch"
    return gaps, len(counts), sum(map(len, branches.values()))


def main(report, list_file, *beginnings):
    listed = read_list(pathlib.Path(list_file))
    lines = branches = listed_gaps = 0
    complaints = []
    for file in json.loads(pathlib.Path(report).read_text())["files"]:
        name = file["file"]
        if not name.startswith(beginnings):
            continue
        gaps, line_count, branch_count = unreached(file["lines"])
        lines += line_count
        branches += branch_count
        texts = (ROOT / name).read_text().splitlines()
        for number, kind in sorted(gaps.items()):
            text = texts[number - 1].strip()
            if text in listed[name]:
                listed_gaps += 1
            else:
                complaints.append(f"{name}:{number}: {kind} that no test reaches: {text}")
    for name, texts in listed.items():
        path = ROOT / name
        there = {line.strip() for line in path.read_text().splitlines()} if path.exists() else set()
        complaints += [f"{list_file}: {name} has no line {text}" for text in sorted(texts - there)]
    print(f"{' '.join(beginnings)}: {lines} lines and {branches} branches looked at, {listed_gaps} gaps "
          f"that {list_file} explains, {len(complaints)} complaints")
    for complaint in complaints:
        print(complaint)
    return 1 if complaints or not lines or not branches else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
