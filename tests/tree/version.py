"""Checks that all that names a version names the one of CMakeLists.txt: version.py TREE"""

import pathlib
import re
import sys

VERSION = r"(\d+\.\d+\.\d+)"
# File, and where its version is: each place must be there.
PLACES = [
    ("CHANGELOG.md", rf"\A# Changelog\n\n(?:## Unreleased\n(?:(?!## ).*\n)*)?## {VERSION} - \d{{4}}-\d\d-\d\d\n"),
    ("debian/changelog", rf"\Aclock-service \({VERSION}\) "),
    ("clients/python/src/deskclock/__init__.py", rf'^__version__ = "{VERSION}"$'),
]


def main(name):
    tree = pathlib.Path(name)
    version = re.search(rf"^project\(.* VERSION {VERSION} ", (tree / "CMakeLists.txt").read_text(), re.M)[1]
    wrong = 0
    for path, place in PLACES:
        found = re.search(place, (tree / path).read_text(), re.M)
        if found is None or found[1] != version:
            print(f"{path}: has {found and found[1]}, should have version {version}: {place}")
            wrong += 1
    package = f"libclockservice{version.split('.')[0]}"
    if f"Package: {package}\n" not in (tree / "debian/control").read_text():
        print(f"debian/control: has no package {package}")
        wrong += 1
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
