"""Who may include whom: include_arrows.py TREE

The plug-in (include/, src/) sees itself, platform/ and the C and C++ libraries; platform/ sees
itself and is declarations only; the host sees itself, platform/ and its libraries.
"""

import pathlib
import re
import sys

# What the files of a folder may include from the tree.
ARROWS = {
    "platform": ["platform"],
    "include": ["include", "src", "platform"],
    "src": ["include", "src", "platform"],
    "host": ["host", "platform"],
}
# The bodies that must do with the C++ library and POSIX.
PLAIN = ["platform", "include", "src"]
POSIX = {"dlfcn.h", "fcntl.h", "poll.h", "pthread.h", "semaphore.h", "signal.h", "spawn.h"}
POSIX |= {"sys/stat.h", "sys/sysinfo.h", "sys/time.h", "sys/types.h", "sys/wait.h", "unistd.h"}
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def sources(tree, body):
    return [path for path in (tree / body).rglob("*") if path.suffix in (".h", ".cpp", ".c")]


def body_of(tree, path, name):
    """The body that holds the file an include names; None for a file of a library."""
    for folder in [path.parent, *(tree / body for body in ARROWS)]:
        target = (folder / name).resolve()
        if target.is_file() and target.is_relative_to(tree):
            return target.relative_to(tree).parts[0]
    return None


def fault_of(tree, path, bracket, name):
    body = path.relative_to(tree).parts[0]
    target = body_of(tree, path, name)
    if target:
        return None if target in ARROWS[body] else f"{body}/ must not see {target}/"
    if bracket == '"':
        return "no such file in the tree"
    if body in PLAIN and not re.fullmatch(r"\w+", name) and name not in POSIX:
        return f"{body}/ must do with the C++ library and POSIX"
    return None


def faults(tree):
    for path in (tree / "platform").rglob("*.c*"):
        yield f"{path.relative_to(tree)}: platform/ is declarations only"
    for body in ARROWS:
        for path in sources(tree, body):
            for bracket, name in INCLUDE.findall(path.read_text()):
                if fault := fault_of(tree, path, bracket, name):
                    yield f"{path.relative_to(tree)}: includes {name}: {fault}"


def main(tree):
    found = list(faults(pathlib.Path(tree).resolve()))
    print(*found, sep="\n")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
