"""Checks that the tests of conformance/ quote the headers of platform/: promises.py TREE

Each header has a file of tests, in which each test first names the promise that it holds, in the
header's own words. A test quotes each comment, or it is listed below.
"""

import pathlib
import re
import sys

# Headers that promise nothing at run time, or that the tests of their users hold the platform to.
WITHOUT = {"PhysDefs", "PluginFactories", "ThreadSafety"}
# How comments begin that no test can hold a platform to: they describe, or say what the plug-in keeps.
WITHOUT_TEST = {
    "DataStorage": ["Names of the settings schemas.", "The context outlives the object;"],
    "Executable": ["Base of the objects", "Called once, before anything else.", "Called once, before destruction."],
    "Invoker": ["Turns encoded requests"],
    "InvokerResponse": ["Sends the reply of one request"],
    "Logging": ["Configured trace levels."],
    "Method": ["One named, typed value", "The direction of the value.", "REQUIRES: the type asked for",
               "events are calls without a reply"],
    "MgmtAgentIfc": ["Applies the record's value", "Fills in the value", "A key observed with", "Resets the items"],
    "PhysicalInterfaceServiceIfc": ["Notice of a change of the clock"],
    "Proxy": ["Stands in for an object"],
    "RejectReason": ["Why a management value"],
    "Threadable": ["A body that a Threader can run", "The thread body;"],
    "Threader": ["Priority of a thread"],
}
COMMENT = re.compile(r"(?:^ *// ?.*\n)+|(?<=;)  // .*", re.MULTILINE)
TEST = re.compile(r"^TEST_F\(\w+, (\w+)\) \{\n(?:  promises\(((?:\s*\"(?:[^\"\\]|\\.)*\")+)\);\n)?", re.MULTILINE)
LITERAL = re.compile(r'"((?:[^"\\]|\\.)*)"')


def one_line(text):
    return " ".join(text.split())


def words_of(header):
    return one_line(re.sub(r"^ *// ?|(?<=;)  // ", " ", header, flags=re.MULTILINE))


def unquoted(name, header, quotes):
    listed = set(WITHOUT_TEST.get(name, []))
    for comment in COMMENT.findall(header):
        words = words_of(comment).strip()
        start = next((start for start in listed if words.startswith(start)), None)
        quoted = any(quote in words for quote in quotes)
        if quoted == (start is not None):
            yield f"{name}: {'a test quotes, so do not list' if quoted else 'no test quotes'}: {words}"
        listed.discard(start)
    yield from (f"{name}: no comment begins with: {start}" for start in listed)


def faults_of(name, header, tests):
    words = words_of(header)
    found = TEST.findall(tests)
    if not found:
        yield f"{name}: has no test"
    quotes = [one_line("".join(LITERAL.findall(literals)).replace('\\"', '"')) for _, literals in found]
    yield from unquoted(name, header, set(quotes) - {""})
    for (test, _), promise in zip(found, quotes):
        if not promise:
            yield f"{name}: {test} does not begin with promises(...)"
        elif promise not in words:
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
