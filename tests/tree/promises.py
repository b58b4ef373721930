"""Checks that the tests of conformance/ quote the headers of platform/: promises.py TREE

Each header has a file of tests, in which each test first names the promise that it holds, in the
header's own words.
"""

import pathlib
import re
import sys

# Headers that promise nothing at run time.
WITHOUT = {"PhysDefs", "PluginFactories", "ThreadSafety"}
TEST = re.compile(r"^TEST_F\(\w+, (\w+)\) \{\n(?:  promises\(((?:\s*\"(?:[^\"\\]|\\.)*\")+)\);\n)?", re.MULTILINE)
LITERAL = re.compile(r'"((?:[^"\\]|\\.)*)"')


def one_line(text):
    return " ".join(text.split())


def words_of(header):
    return one_line(re.sub(r"^ *// ?|(?<=;)  // ", " ", header, flags=re.MULTILINE))


def faults_of(name, header, tests):
    words = words_of(header)
    found = TEST.findall(tests)
    if not found:
        yield f"{name}: has no test"
    for test, literals in found:
        promise = "".join(LITERAL.findall(literals)).replace('\\"', '"')
        if not promise:
            yield f"{name}: {test} does not begin with promises(...)"
        elif one_line(promise) not in words:
            yield f"{name}: {test}: {name}.h does not say: {promise}"


def faults(tree):
    headers = {path.stem: path for path in (tree / "platform").glob("*.h")}
    tests = {path.stem: path for path in (tree / "conformance/promises").glob("*.cpp")}
    for name in sorted(headers.keys() - tests.keys() - WITHOUT):
        yield f"{name}: no file of tests for this header"
    for name in sorted(tests.keys()):
        if name not in headers:
            yield f"{name}: there is no such header"
        else:
            yield from faults_of(name, headers[name].read_text(), tests[name].read_text())


def main(tree):
    found = list(faults(pathlib.Path(tree)))
    print(*found, sep="\n")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
