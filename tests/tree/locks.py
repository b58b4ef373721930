"""Checks that the lock tables name every lock: locks.py TREE

A file of include/, src/ or host/ that declares a Mutex or a Semaphore has a row for it in
docs/explanation/architecture.md: the plug-in's locks by their names, the host's by class or file,
one row for each lock. A std::mutex, which the thread-safety analysis does not see, is only in the
host's Mutex.h.
"""

import collections
import pathlib
import re
import sys

DOCUMENT = "docs/explanation/architecture.md"
LOCK = re.compile(r"^ *(?:mutable |static |constinit )*(?:host::)?(?:Mutex|Semaphore) (\w+)(?:\{.*\})?;", re.M)
PLAIN_LOCK = re.compile(r"^ *[^/\n]*\bstd::\w*mutex \w+", re.M)
ROW = re.compile(r"^\| `(\w+)`", re.M)


def faults_of(tree):
    rows = collections.Counter(ROW.findall((tree / DOCUMENT).read_text()))
    for folder in ("include", "src", "host"):
        for path in sorted((tree / folder).rglob("*")):
            if path.suffix not in (".h", ".cpp"):
                continue
            place = path.relative_to(tree)
            text = path.read_text()
            if PLAIN_LOCK.search(text) and str(place) != "host/base/Mutex.h":
                yield f"{place}: has a std::mutex; use a Mutex in the host, a Semaphore in the plug-in"
            for lock in LOCK.findall(text):
                name = path.stem if folder == "host" else lock
                rows[name] -= 1
                if rows[name] < 0:
                    yield f"{place}: {lock} has no row in {DOCUMENT}"


def main(tree):
    found = list(faults_of(pathlib.Path(tree).resolve()))
    print(*found, sep="\n")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
