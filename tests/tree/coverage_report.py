"""Tests the figures and exit status of ./dev coverage: coverage_report.py TREE"""

import contextlib
import io
import pathlib
import sys
import tempfile

ALL = "DA:1,1\nDA:2,7\nBRDA:1,0,0,1\nBRDA:1,0,1,3\n"
HALF = "DA:1,1\nDA:2,0\nBRDA:1,0,0,1\nBRDA:1,0,1,-\n"
SOURCE = "SF:../../src/A.cpp\n"
HOST = "SF:../../host/B.cpp\n"
NOTHING = "has no lines or no branches of the plug-in"

# A report, the expected exit status, and a part of the expected output.
ROWS = [
    (SOURCE + ALL, 0, "all of plug-in            2       0   100.0        2       0   100.0"),
    (SOURCE + ALL + HOST + HALF, 0, "all of host               2       1    50.0        2       1    50.0"),
    (SOURCE + HALF, 1, "missed src/A.cpp:2\nmissed src/A.cpp:1 never false\n"),
    # reports without figures of the plug-in
    ("", 1, NOTHING),
    (HOST + ALL, 1, NOTHING),
    ("SF:/elsewhere/src/A.cpp\n" + ALL, 1, NOTHING),
    (SOURCE + "DA:1,1\n", 1, NOTHING),
    (SOURCE + "BRDA:1,0,0,1\n", 1, NOTHING),
]


def result_of(coverage, tree, text):
    printed = io.StringIO()
    with tempfile.NamedTemporaryFile("w", suffix=".lcov") as report:
        report.write(text)
        report.flush()
        with contextlib.redirect_stdout(printed):
            status = coverage.main(tree, report.name)
    return status, printed.getvalue()


def main(tree):
    sys.path.insert(0, str(pathlib.Path(tree, "tools/dev")))
    import coverage

    wrong = 0
    for text, status, words in ROWS:
        result, printed = result_of(coverage, tree, text)
        if result != status or words not in printed:
            print(f"{text!r}: exit status {result}, should be {status}, with output {words!r}:\n{printed}")
            wrong += 1
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
