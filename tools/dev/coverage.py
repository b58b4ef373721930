"""Prints the table of a coverage run, and the lines and branches of the plug-in that no test reached.

Usage: coverage.py TREE LCOV_FILE

The exit status is 1 when the plug-in is under its limits, or not in the file.
"""

import os
import pathlib
import sys
from collections import defaultdict

PLUGIN = ("include", "src")
# Per cent of the plug-in's lines and branches.
LEAST_LINES = 98.0
LEAST_BRANCHES = 95.0


class Count:
    """How many lines and branches there are, and which of them were not reached."""

    def __init__(self):
        self.lines = self.branches = 0
        self.missed_lines = []
        self.missed_branches = []

    def add(self, other):
        self.lines += other.lines
        self.branches += other.branches
        self.missed_lines += other.missed_lines
        self.missed_branches += other.missed_branches

    def line_share(self):
        return share(self.lines, self.missed_lines)

    def branch_share(self):
        return share(self.branches, self.missed_branches)

    def text(self, name):
        lines = f"{self.lines:7} {len(self.missed_lines):7} {self.line_share():7.1f}"
        branches = f"{self.branches:9} {len(self.missed_branches):7} {self.branch_share():7.1f}"
        return f"{name:20}{lines}{branches}"


def share(total, missed):
    return 100.0 * (total - len(missed)) / total if total else 100.0


def read(tree, report):
    """Counts for each file. In LCOV, SF names a file, DA counts a line, BRDA one outcome of a condition."""
    counts = defaultdict(Count)
    name = ""
    for line in report.splitlines():
        tag, _, rest = line.partition(":")
        if tag == "SF":
            name = os.path.relpath(os.path.join(tree, "build", "coverage", rest), tree)
        elif tag == "DA":
            number, count = rest.split(",")[:2]
            note(counts[name], "lines", int(count) > 0, f"{name}:{number}")
        elif tag == "BRDA":
            number, _, way, count = rest.split(",")
            taken = count not in ("0", "-")
            side = "true" if int(way) % 2 == 0 else "false"
            note(counts[name], "branches", taken, f"{name}:{number} never {side}")
    return {name: count for name, count in counts.items() if not name.startswith("platform/")}


def note(count, kind, reached, place):
    setattr(count, kind, getattr(count, kind) + 1)
    if not reached:
        getattr(count, f"missed_{kind}").append(place)


def sums(counts, key):
    found = defaultdict(Count)
    for name in sorted(counts):
        found[key(name)].add(counts[name])
    return found


def part_of(name):
    top = pathlib.PurePath(name).parts[0]
    return "plug-in" if top in PLUGIN else top


def main(tree, report):
    counts = read(os.path.realpath(tree), pathlib.Path(report).read_text())
    print(f"{'':20}{'lines':>7} {'missed':>7} {'%':>7}{'branches':>9} {'missed':>7} {'%':>7}")
    for folder, count in sums(counts, lambda name: str(pathlib.PurePath(name).parent)).items():
        print(count.text(folder))
    parts = sums(counts, part_of)
    for part, count in parts.items():
        print(count.text(f"all of {part}"))
    plugin = parts["plug-in"]
    for place in plugin.missed_lines + plugin.missed_branches:
        print(f"missed {place}")
    if not plugin.lines or not plugin.branches:
        print(f"coverage: {report} has no lines or no branches of the plug-in")
        return 1
    return 0 if plugin.line_share() >= LEAST_LINES and plugin.branch_share() >= LEAST_BRANCHES else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
