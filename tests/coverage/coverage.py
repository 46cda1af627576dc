#!/usr/bin/env python3
"""What the tests reach of the library: lines, branches both ways, and conditions that decide alone (MC/DC).

usage: coverage.py SOURCE_DIRECTORY JUSTIFIED PROFILE PROGRAM...

Prints a line for each source and the sum. Fails on a gap that the file JUSTIFIED does not list, and on one that it lists
and that is none any more. There, a gap is a line "source | kind | text of the source line", and the lines below, indented,
say why it stays.
"""

import collections
import json
import pathlib
import subprocess
import sys

LIBRARY = "PlatformServices/FrequencyHandler/"


def export(profile, programs, form):
    objects = [word for program in programs[1:] for word in ("-object", program)]
    command = ["llvm-cov-19", "export", f"-format={form}", "-instr-profile", profile, programs[0], *objects]
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


def in_library(name):
    """The source's path in the library, or nothing."""
    return name[name.index(LIBRARY) + len(LIBRARY):] if LIBRARY in name else None


class Coverage:
    """Of each source: whether each thing that there is to reach was reached, by its kind and its place."""

    def __init__(self):
        self.reached = collections.defaultdict(dict)

    def add(self, source, kind, place, reached):
        things = self.reached[source]
        things[kind, place] = things.get((kind, place), False) or reached

    def add_lines(self, report):
        source = None
        for line in report.splitlines():
            word, _, rest = line.partition(":")
            if word == "SF":
                source = in_library(rest)
            elif word == "DA" and source:
                number, count = rest.split(",")[:2]
                self.add(source, "line", (int(number),), int(count) > 0)

    def add_branches(self, source, branches, site):
        for branch in branches:
            # Where a macro stands counts, not where it is made.
            place = (*(site or branch[:2]), *branch[:2])
            self.add(source, "branch never true", place, branch[4] > 0)
            self.add(source, "branch never false", place, branch[5] > 0)

    def add_file(self, file):
        source = in_library(file["filename"])
        if not source:
            return
        self.add_branches(source, file["branches"], None)
        for expansion in file["expansions"]:
            self.add_branches(source, expansion["branches"], expansion["source_region"][:2])
        for record in file["mcdc_records"]:
            for number, decides in enumerate(record[-1], 1):
                self.add(source, "condition never decides", (*record[:2], number), decides)

    def count(self, source, word):
        things = [reached for (kind, _), reached in self.reached[source].items() if kind.startswith(word)]
        return sum(things), len(things)

    def gaps(self, root):
        for source, things in self.reached.items():
            text = (root / LIBRARY / source).read_text().splitlines()
            for kind, place in sorted(thing for thing, reached in things.items() if not reached):
                yield f"{source} | {kind} | {text[place[0] - 1].strip()}"


def justified(path):
    lines = path.read_text().splitlines()
    return [line.strip() for line in lines if line.strip() and not line.startswith((" ", "#"))]


def main():
    root, list_of_gaps, profile, *programs = sys.argv[1:]
    coverage = Coverage()
    coverage.add_lines(export(profile, programs, "lcov"))
    for file in json.loads(export(profile, programs, "text"))["data"][0]["files"]:
        coverage.add_file(file)

    total = [[0, 0], [0, 0], [0, 0]]
    print(f"{'library coverage':58} {'lines':>12} {'branches':>12} {'MC/DC':>12}")
    for source in sorted(coverage.reached):
        counts = [coverage.count(source, word) for word in ("line", "branch", "condition")]
        total = [[sum(pair) for pair in zip(*both)] for both in zip(total, counts)]
        print(f"{source:58}" + "".join(f" {f'{reached}/{there}':>12}" for reached, there in counts))
    print(f"{'all':58}" + "".join(f" {f'{reached}/{there}':>12}" for reached, there in total))
    print(f"{'':58}" + "".join(f" {100 * reached / there:>11.2f}%" for reached, there in total))

    found = collections.Counter(coverage.gaps(pathlib.Path(root)))
    known = collections.Counter(justified(pathlib.Path(list_of_gaps)))
    for gap in (found - known).elements():
        print(f"not reached and not justified: {gap}")
    for gap in (known - found).elements():
        print(f"justified in {list_of_gaps} and not there any more: {gap}")
    print(f"{sum(found.values())} gaps, {sum(known.values())} justified in {list_of_gaps}")
    return 0 if found == known else 1


if __name__ == "__main__":
    sys.exit(main())
