"""Checks that the table of fleets is what the program prints: fleet.py FLEET TREE"""

import pathlib
import re
import subprocess
import sys

ROW = re.compile(r" +\d+ +(?:consecutive|random) .*")
DOCUMENTED = re.compile(r"^\| [\d,]+ \| (?:consecutive|random) \|.*$", re.M)


def table_row(line):
    """The row of the document for a line of the program; the document leaves out the fullest second."""
    devices, macs, hour, requests, mean, peak, ratio, _, empty = line.split()
    cells = (f"{int(devices):,}", macs, hour, f"{int(requests):,}", f"{float(mean):,.1f}",
             f"{int(peak):,}", ratio, empty)
    return f"| {' | '.join(cells)} |"


def main(fleet, tree):
    printed = subprocess.run([fleet], check=True, capture_output=True, text=True).stdout
    rows = [table_row(line) for line in printed.splitlines() if ROW.fullmatch(line)]
    if rows and DOCUMENTED.findall(pathlib.Path(tree, "docs/explanation/fleet.md").read_text()) == rows:
        return 0
    print("docs/explanation/fleet.md: the table should be", *rows, sep="\n")
    return 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
