"""Checks the rules for single files: files.py TREE

No source has 300 lines or more, nor the panel and its page 3,000, no file contains a path of the machine it was written on, and the
documents name only existing commands of ./dev.
"""

import pathlib
import re
import sys

MOST_LINES = 300
MOST_OF_PANEL = 3000
SKIPPED = re.compile(r"(^|/)(\.(?!ci/)[^/]+|build|__pycache__)/")
SOURCES = {".h", ".cpp", ".c", ".py", ".sh", ".bash", ".cmake"}
HOME_FOLDER = re.compile(r"/(?:home|root|Users)/\w+")
VERB = re.compile(r"\./dev ([a-z]+)")


def files(tree):
    for path in sorted(tree.rglob("*")):
        if path.is_file() and not SKIPPED.search(str(path.relative_to(tree))):
            yield path


def panel_lines(tree):
    program = [path for path in (tree / "panel").rglob("*") if path.suffix in (".h", ".cpp")]
    return sum(path.read_bytes().count(b"\n") for path in [*program, *(tree / "panel" / "page").iterdir()])


def faults_of(tree, path, text):
    lines = text.count("\n")
    if path.suffix in SOURCES and lines >= MOST_LINES:
        yield f"{lines} lines, should be under {MOST_LINES}"
    for place in {str(tree), *HOME_FOLDER.findall(text)}:
        if place in text:
            yield f"contains {place}, a path of one machine"
    if path.suffix == ".md":
        for verb in sorted(set(VERB.findall(text))):
            if not (tree / "tools" / "dev" / f"{verb}.sh").exists():
                yield f"./dev {verb}: no such verb"


def main(name):
    tree = pathlib.Path(name).resolve()
    wrong = 0
    for path in files(tree):
        for fault in faults_of(tree, path, path.read_bytes().decode(errors="replace")):
            print(f"{path.relative_to(tree)}: {fault}")
            wrong += 1
    if (lines := panel_lines(tree)) >= MOST_OF_PANEL:
        print(f"panel: {lines} lines, should be under {MOST_OF_PANEL}")
        wrong += 1
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
