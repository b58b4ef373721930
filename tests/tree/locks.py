"""Checks that the lock tables name every lock: locks.py TREE

A file of include/, src/ or host/ that declares a Mutex or a Semaphore has a row for it in
docs/explanation/architecture.md: the plug-in's locks by their names, the host's by class or file.
"""

import pathlib
import re
import sys

DOCUMENT = "docs/explanation/architecture.md"
LOCK = re.compile(r"^ *(?:mutable |static |constinit )*(?:host::)?(?:Mutex|Semaphore) (\w+)(?:\{.*\})?;", re.M)
ROW = re.compile(r"^\| `(\w+)`(?: \(`(\w+)`\))?", re.M)


def faults_of(tree):
    rows = {name for row in ROW.findall((tree / DOCUMENT).read_text()) for name in row}
    for folder in ("include", "src", "host"):
        for path in sorted((tree / folder).rglob("*")):
            if path.suffix not in (".h", ".cpp"):
                continue
            for lock in LOCK.findall(path.read_text()):
                if (path.stem if folder == "host" else lock) not in rows:
                    yield f"{path.relative_to(tree)}: {lock} has no row in {DOCUMENT}"


def main(tree):
    found = list(faults_of(pathlib.Path(tree).resolve()))
    print(*found, sep="\n")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
