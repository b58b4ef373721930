"""Checks that every source of the tree is in the build: built_sources.py TREE BUILD_FOLDER"""

import json
import pathlib
import re
import sys

BODIES = ["src", "host", "conformance", "examples", "bench", "tests"]
# Read by a check, never built.
EXCEPTIONS = {"tests/abi/slots.cpp"}


# The sources in a file that CMake generates to compile several together.
INCLUDED = re.compile(r'^#include "(.+)"$', re.MULTILINE)


def sources_of(entry):
    path = pathlib.Path(entry["directory"], entry["file"])
    if path.parent.name != "Unity":
        return [path]
    return [pathlib.Path(source) for source in INCLUDED.findall(path.read_text())]


def built(build):
    commands = json.loads((build / "compile_commands.json").read_text())
    return {path.resolve() for entry in commands for path in sources_of(entry)}


def main(tree, build):
    tree = pathlib.Path(tree).resolve()
    present = {path for body in BODIES for path in (tree / body).rglob("*.c*") if path.is_file()}
    present = {path for path in present if path.suffix in (".c", ".cpp", ".cc")}
    left_out = {str(path.relative_to(tree)) for path in present - built(pathlib.Path(build))}
    left_out -= EXCEPTIONS
    for name in sorted(left_out):
        print(f"{name}: not in the build")
    return 1 if left_out else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
