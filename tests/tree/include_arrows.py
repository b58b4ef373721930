"""Checks which folder includes which: include_arrows.py TREE

The plug-in (include/, src/) sees itself, platform/ and the C and C++ libraries; platform/ sees
itself and is declarations only; the host and conformance/ see themselves, platform/ and their
libraries; examples/ sees itself and the headers that are installed. A folder of the host sees itself
and those that its CMakeLists.txt needs, directly or through others; no two need each other.
"""

import graphlib
import pathlib
import re
import sys

# What the files of a folder may include from the tree.
ARROWS = {
    "platform": ["platform"],
    "include": ["include", "src", "platform"],
    "src": ["include", "src", "platform"],
    "host": ["host", "platform"],
    "examples": ["examples", "include", "platform", "conformance"],
    "panel": ["panel", "host", "platform"],
    "conformance": ["conformance", "platform"],
}
# The bodies that may use only the C++ library and POSIX.
PLAIN = ["platform", "include", "src", "examples"]
POSIX = {"arpa/inet.h", "dlfcn.h", "fcntl.h", "poll.h", "pthread.h", "semaphore.h", "signal.h", "spawn.h"}
POSIX |= {"sys/stat.h", "sys/sysinfo.h", "sys/time.h", "sys/types.h", "sys/wait.h", "unistd.h"}
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)
COMPONENT = re.compile(r"clock_add_component\(\s*NAME (\w+)([^)]*)\)")


def needs_of_host(tree):
    """The folders that each folder of the host needs, according to its CMakeLists.txt."""
    folders, needs = {}, {}
    for path in sorted((tree / "host").glob("*/CMakeLists.txt")):
        for name, rest in COMPONENT.findall(path.read_text()):
            folders[name] = path.parent.name
            listed = re.search(r"NEEDS([\s\w]*?)(LIBS|$)", rest)
            needs.setdefault(path.parent.name, set()).update(listed[1].split() if listed else [])
    return {folder: {folders[name] for name in names} - {folder} for folder, names in needs.items()}


def reachable(needs):
    """The folders that each folder needs directly or through others, and itself. Throws
    graphlib.CycleError."""
    found = {}
    for folder in graphlib.TopologicalSorter(needs).static_order():
        found[folder] = {folder}.union(*(found[need] for need in needs[folder]))
    return found


def sources(tree, body):
    return [path for path in (tree / body).rglob("*") if path.suffix in (".h", ".cpp", ".c")]


def target_of(tree, path, name):
    """The parts of the path of the file that an include names; none for a file of a library."""
    for folder in [path.parent, *(tree / body for body in ARROWS)]:
        target = (folder / name).resolve()
        if target.is_file() and target.is_relative_to(tree):
            return target.relative_to(tree).parts
    return ()


def fault_of(tree, path, bracket, name):
    body = path.relative_to(tree).parts[0]
    target = target_of(tree, path, name)
    if target:
        return None if target[0] in ARROWS[body] else f"{body}/ must not see {target[0]}/"
    if bracket == '"':
        return "no such file in the tree"
    if body in PLAIN and not re.fullmatch(r"\w+", name) and name not in POSIX:
        return f"{body}/ may use only the C++ library and POSIX"
    return None


def folder_faults(tree):
    try:
        seen = reachable(needs_of_host(tree))
    except graphlib.CycleError as error:
        yield f"host/: folders that need each other: {' > '.join(error.args[1])}"
        return
    for path in sources(tree, "host"):
        folder = path.relative_to(tree).parts[1]
        for _, name in INCLUDE.findall(path.read_text()):
            target = target_of(tree, path, name)
            if target[:1] == ("host",) and target[1] in seen and target[1] not in seen[folder]:
                yield f"{path.relative_to(tree)}: includes {name}: {folder}/ does not need {target[1]}/"


def body_faults(tree):
    for path in (tree / "platform").rglob("*.c*"):
        yield f"{path.relative_to(tree)}: platform/ is declarations only"
    for body in ARROWS:
        for path in sources(tree, body):
            for bracket, name in INCLUDE.findall(path.read_text()):
                if fault := fault_of(tree, path, bracket, name):
                    yield f"{path.relative_to(tree)}: includes {name}: {fault}"


def faults_of(tree):
    return [*body_faults(tree), *folder_faults(tree)]


def main(tree):
    found = faults_of(pathlib.Path(tree).resolve())
    print(*found, sep="\n")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
