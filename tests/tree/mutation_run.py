"""Tests how ./dev mutate handles its arguments and its verdicts: mutation_run.py TREE"""

import contextlib
import io
import pathlib
import subprocess
import sys
import tempfile

# The verdicts, and whether they are good enough. F: found, S: survived, N: does not compile.
SUMMARIES = [
    ("F" * 9 + "S", True),
    ("F" * 8 + "S", False),
    ("F" * 20 + "N" * 5, True),
    ("F" * 5 + "N" * 5, True),  # with so few it may be chance
    ("F" * 20 + "N" * 6, False),
    ("F" * 100 + "N" * 24, True),
    ("", False),
    ("NN", False),
]
# The verdicts on all mutants, how many that compile are wanted (0: all), and the ones to be drawn.
DRAWS = [("FNFSNF", 3, "FNFS"), ("NNF", 1, "NNF"), ("NFF", 0, "NFF"), ("NNN", 1, "NNN")]
WRONG_WORDS = [
    ["--wat"],
    ["--help"],
    ["--count", "-5"],
    ["--count", "many"],
    ["--jobs", "0"],
    ["--see", "1"],
    ["--shard", "3/2"],
    ["--shard", "1"],
    ["--count", "3", "--shard", "1/4"],
    ["src/NoSuchFile.cpp"],
    ["tests/support/Telephone.cpp"],
    ["host/nowhere"],
    ["host/clo"],
    ["/"],
    [""],
]
# Arguments, targets that must be built for them, and one that must not.
RIGHT_WORDS = [
    ([], "clock_unit_test", "host_clock_test"),
    (["--seed", "2", "--count", "0", "--jobs", "1", "src/Saturate.h"], "clock_unit_test", "clockhost"),
    (["--shard", "2/4", "--results", "r.jsonl", "src/Saturate.h"], "clock_unit_test", "clockhost"),
    (["host/remote", "host/verbs/"], "clockctl", "clock_unit_test"),
    (["host", "src"], "clock_unit_test host_clock_test", "bench_test"),
]


class StubWorkshop:
    """Stub: returns the mutant as its verdict."""

    def verdict(self, mutant):
        return mutant


def summaries(mutate, verdict_of):
    for letters, good in SUMMARIES:
        if mutate.summary([verdict_of[letter] for letter in letters], 1) != good:
            yield f"{letters!r}: should be {'good' if good else 'bad'}"


def draws(mutate, verdict_of):
    mutate.show = lambda *_: None
    for letters, count, expected in DRAWS:
        mutants = [verdict_of[letter] for letter in letters]
        made = mutate.drawn(mutants, count, [StubWorkshop(), StubWorkshop()])
        if made != mutants[: len(expected)]:
            yield f"{count} of {letters!r}: {len(made)} drawn, should be {len(expected)}"


def broken_workshops(mutate, verdict_of):
    """An unchanged source that does not compile or pass ends the run before its first mutant."""
    for letter in "FSN":
        workshop = StubWorkshop()
        workshop.verdict = lambda mutant, letter=letter: verdict_of[letter]
        try:
            mutate.check(workshop, mutate.Mutant("src/A.cpp", "", 0, 0, ""))
            ended = False
        except SystemExit:
            ended = True
        if ended != (letter != "S"):
            yield f"an unchanged source with verdict {letter}: {'ended' if ended else 'goes on'}"


class Build:
    """Stub of one object and one program; compiler and linker only succeed or fail."""

    def __init__(self, tree, folder, compiler, linker):
        self.tree, self.folder = tree, folder
        self.links = {"bin/tests/test": [linker, "-o", "test", "a.o"]}
        (folder / "bin/tests").mkdir(parents=True)
        (folder / "bin/tests/test").touch()
        (folder / "joined.cxx").write_text(f'#include "{tree}/src/Saturate.h"')
        self.compiler = compiler

    def objects_of(self, path):
        return ["a.o"]

    def compilation(self, name):
        return [self.compiler, "-o", name, "-c", f"{self.folder}/joined.cxx"]


# The commands that build a program, and the words of its link.
COMMANDS = """c++ -o a.o -c a.cpp
: && cmake -E rm -f src/libparts.a && /usr/bin/llvm-ar qc src/libparts.a  a.o b.o && ranlib src/libparts.a && :
: && c++ c.o -o test  src/libparts.a /usr/lib/libgtest.a && :
"""
LINK = "c++ c.o -o test -Wl,--start-lib a.o b.o -Wl,--end-lib /usr/lib/libgtest.a"


def libraries():
    """A program links the objects of a static library, so that it judges their mutants."""
    from build import link_words

    if link_words(COMMANDS) != LINK.split():
        yield f"{COMMANDS!r}: {link_words(COMMANDS)}, should be {LINK.split()}"


# Fails unless the source is the mutant.
COMPILER = """#!/bin/sh
file=$(cut -d'"' -f2 "$4") && grep -q mutated "$file"
"""


def verdict_with(mutate, tree, *tools):
    from running import Program

    with tempfile.TemporaryDirectory() as folder:
        build = Build(pathlib.Path(tree), pathlib.Path(folder), *tools)
        judge = Program("bin/tests/test", ("src",))
        workshop = mutate.Workshop(build, build.folder / "job", [judge])
        try:
            return workshop.verdict(mutate.Mutant("src/Saturate.h", "", 0, 0, "mutated"))
        except mutate.NoLink:
            return "no link"


def broken_tools(mutate, tree):
    """A failed compilation is a verdict on the mutant; a failed link is an error of the run."""
    for tools, expected in [(("false", "true"), mutate.NO_BUILD), (("true", "false"), "no link")]:
        verdict = verdict_with(mutate, tree, *tools)
        if verdict != expected:
            yield f"compiler and linker {tools}: {verdict}, should be {expected}"


def joined_sources(mutate, tree):
    """A generated source that includes others includes the mutant."""
    with tempfile.TemporaryDirectory() as folder:
        compiler = pathlib.Path(folder, "compiler")
        compiler.write_text(COMPILER)
        compiler.chmod(0o755)
        verdict = verdict_with(mutate, tree, str(compiler), "false")
    if verdict != "no link":
        yield f"a mutant that another source includes: {verdict}, should be compiled and fail to link"


def words(tree):
    command = [sys.executable, "-B", f"{tree}/tools/mutate/options.py", tree]
    for wrong in WRONG_WORDS:
        result = subprocess.run(command + wrong, capture_output=True, text=True)
        if result.returncode != 2 or result.stderr.count("\n") != 1 or result.stdout:
            yield f"{wrong}: exit status {result.returncode}, should be 2 with one line: {result.stderr!r}"
    for right, built, unbuilt in RIGHT_WORDS:
        result = subprocess.run(command + right, capture_output=True, text=True)
        targets = set(result.stdout.split())
        if result.returncode != 0 or not targets.issuperset(built.split()) or unbuilt in targets:
            yield f"{right}: exit status {result.returncode}, builds {result.stdout!r}"
            yield f"  should be 0, with {built} and without {unbuilt}"


def main(tree):
    sys.path.insert(0, str(pathlib.Path(tree, "tools/mutate")))
    import mutate
    from running import FAILED, PASSED
    from workshop import NO_BUILD

    verdict_of = {"F": FAILED, "S": PASSED, "N": NO_BUILD}
    with contextlib.redirect_stdout(io.StringIO()):
        wrong = [*summaries(mutate, verdict_of), *draws(mutate, verdict_of)]
    wrong += [*broken_workshops(mutate, verdict_of), *broken_tools(mutate, tree)]
    wrong += [*joined_sources(mutate, tree), *libraries()]
    wrong += words(tree)
    for line in wrong:
        print(line)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
