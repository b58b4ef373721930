"""Tests the verdicts, the clone and the refusals of ./dev bench --compare: compare.py TREE"""

import contextlib
import io
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile

TIME = {"figure": "a time", "unit": "us"}
RATE = {"figure": "a rate", "unit": "/s"}
COUNT = {"figure": "a count", "unit": ""}
MEMORY = {"figure": "memory", "unit": "KiB"}
STEADY = [100, 101, 99, 100, 102, 98, 100, 100]
BUSY = [100, 130, 90, 105, 120, 95, 85, 112]
BROKEN = {**TIME, "failure": "the disk has gone"}

# A figure, its values here and there, and the verdict.
ROWS = [
    (TIME, [x + 10 for x in STEADY], STEADY, "slower"),
    (TIME, [x - 10 for x in STEADY], STEADY, "faster"),
    (RATE, [x + 10 for x in STEADY], STEADY, "faster"),
    (RATE, [x - 10 for x in STEADY], STEADY, "slower"),
    (TIME, STEADY, STEADY, "same"),
    (TIME, [x + 10 for x in BUSY], BUSY, "same"),  # within noise
    (TIME, [110] * 8, STEADY[1:] + [150], "slower"),  # one run was disturbed
    (TIME, [105.9] * 8, [100] * 8, "same"),  # less than the smallest change that matters
    (TIME, [106.1] * 8, [100] * 8, "slower"),
    (COUNT, [4] * 8, [3] * 8, "more"),
    (COUNT, [3] * 8, [4] * 8, "less"),
    (COUNT, [1001] * 8, [1000] * 8, "more"),  # every change of a count matters
    (COUNT, [3] * 7 + [4], [3] * 8, "same"),
    (COUNT, [1] * 8, [0] * 8, "more"),
    (COUNT, [0] * 8, [0] * 8, "same"),
    (MEMORY, [568] * 8, [576] * 8, "same"),
    (MEMORY, [500] * 8, [576] * 8, "less"),
    (TIME, STEADY, [], "only here"),
    (TIME, [], STEADY, "only there"),
]

# A stub of the benchmark. Each line of the file "figures" in its tree is a figure: name, value, unit.
PROGRAM = """#!/bin/bash
figures=$(dirname "$(readlink -f "$0")")/../../../figures
if [ "$1" = --help ]; then
  echo "  --only NAME:{$(cut -d' ' -f1 "$figures" | paste -sd,)} ..."
  exit
fi
read -r name value unit < <(grep "^${1#--only=} " "$figures")
echo "$name $(readlink -f "$figures")" >>"$RUNS"
if [ "$name" = endless ]; then
  tail -f /dev/null 3>"${RUNS%.txt}.held" &
  echo "started" >"${RUNS%.txt}.held"
  wait
fi
[ "$3" = --factor=100 ] || exit 3 # a bound could select among its measurements
printf '{"figures": [{"name": "%s", "figure": "%s", "value": %s, "unit": "%s"}]}' \\
  "$name" "$name" "$value" "$unit" >"${2#--json=}"
exit 1
"""
BUILDING = """
folder_of() { echo "$CLOCK_TREE/build/$1"; }
configure() { mkdir -p "$(folder_of "$1")/bin"; }
build() { install -m 755 "$CLOCK_TREE/program" "$(folder_of default)/bin/clockbench"; }
"""
BUILD = '#!/bin/bash\n# build [TARGET]...: build\n. "$CLOCK_TREE/tools/dev/building.bash"\nconfigure default\nbuild default "$@"\n'


def verdicts(compare):
    for entry, here, there, verdict in ROWS:
        sides = [[{**entry, "value": value} for value in values] for values in (here, there)]
        found = compare.row_of("name", *sides)
        if found.verdict != verdict:
            yield f"{entry['figure']} {here} here, {there} there: {found.verdict}, should be {verdict}"
    for side, sides in (("here", ([BROKEN], [])), ("there", ([{**TIME, "value": 1}], [BROKEN]))):
        found = compare.row_of("name", *sides)
        if found.verdict != f"fails {side}: the disk has gone":
            yield f"a figure that fails {side}: {found.verdict}"


class Tree:
    """A repository of two commits, OLD and HEAD, with this tree's tool and a stub of the rest."""

    def __init__(self, tree, folder):
        self.folder = folder / "tree"
        self.runs = folder / "runs.txt"
        (self.folder / "tools/dev").mkdir(parents=True)
        for name in ("dev", "tools/dev/bench.sh", "tools/dev/cases.py", "tools/dev/compare.py"):
            shutil.copy(tree / name, self.folder / name)
        for name, text in (("tools/dev/packages.bash", "need() { :; }\n"), ("tools/dev/build.sh", BUILD),
                           ("tools/dev/building.bash", BUILDING), ("program", PROGRAM), (".gitignore", "build\n")):
            (self.folder / name).write_text(text)
        self.git("init", "-q")
        self.commit("kept 100 us\nslow 100 us\ngone 3\n")
        self.git("tag", "OLD")
        self.commit("kept 100 us\nslow 200 us\nnew 3\n")

    def git(self, *words):
        names = ["-c", "user.name=Test", "-c", "user.email=test@example.com"]
        environment = {"PATH": os.environ["PATH"], "GIT_CONFIG_GLOBAL": "/dev/null"}
        return subprocess.run(["git", *names, *words], cwd=self.folder, env=environment, check=True,
                              capture_output=True, text=True).stdout

    def commit(self, figures):
        (self.folder / "figures").write_text(figures)
        self.git("add", "--all")
        self.git("commit", "-q", "-m", "figures")

    def state(self):
        return self.git("status", "--porcelain", "--branch") + self.git("worktree", "list") + self.git("rev-parse", "HEAD")

    def start(self, *words):
        """Starts ./dev bench with GIT_DIR set, as in a git hook."""
        self.runs.write_text("")
        environment = {"PATH": os.environ["PATH"], "RUNS": str(self.runs), "GIT_DIR": str(self.folder / ".git")}
        return subprocess.Popen([self.folder / "dev", "bench", *words], env=environment, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def bench(self, *words):
        process = self.start(*words)
        output, error = process.communicate()
        return subprocess.CompletedProcess(words, process.returncode, output, error)


def expected(what, result, status, *words):
    """Each of words is in the output, blanks aside."""
    output = " ".join((result.stdout + result.stderr).split())
    missing = [word for word in words if word not in output]
    if result.returncode != status or missing:
        yield f"{what}: exit status {result.returncode}, should be {status}, with {missing}:\n{output}"


def comparisons(tree):
    before = tree.state()
    result = tree.bench("--compare", "OLD", "--json", str(tree.folder / "build/c.json"))
    yield from expected("two commits", result, 1, "kept 100 us 100 us +0.0 % 0.0 % same",
                        "slow 200 us 100 us +100.0 % 0.0 % slower", "gone - 3 only there", "new 3 - only here")
    if "runs" in result.stderr:
        yield f"progress that is not on a terminal: {result.stderr!r}"
    sides = "".join("t" if "/compare/" in run else "h" for run in tree.runs.read_text().splitlines()
                    if run.startswith("kept"))
    if sides != "htth" * 4:
        yield f"sides measured in the order {sides}"
    rows = json.loads((tree.folder / "build/c.json").read_text())["figures"]
    if [row["verdict"] for row in rows] != ["same", "slower", "only here", "only there"]:
        yield f"JSON: {rows}"
    (tree.folder / "build/compare/.git/HEAD").unlink()  # as after a clone that was interrupted
    yield from expected("a broken clone", tree.bench("--compare", "HEAD", "--only", "slow"), 0, "slow 200 us 200 us")
    if tree.state() != before:
        yield f"the repository changed:\n{before}\n{tree.state()}"


def interruptions(tree):
    """Interrupts a benchmark that does not end. The FIFO gives end of file once it and its children have ended."""
    held = tree.runs.with_suffix(".held")
    tree.commit("endless 1\n")
    for interruption in (signal.SIGINT, signal.SIGTERM):
        os.mkfifo(held)
        process = tree.start("--compare", "HEAD")
        with open(held) as started:
            started.readline()
            process.send_signal(interruption)
            started.read()
        output, error = process.communicate()
        result = subprocess.CompletedProcess([], process.returncode, output, error)
        yield from expected(interruption.name, result, 130)
        if error:
            yield f"{interruption.name}: {error}"
        held.unlink()


def refusals(tree):
    for words, line in [
        (["--compare", "none"], '"none" is not a commit of this repository'),
        (["--compare=--only"], '"--only" is not a commit of this repository'),
        (["--compare", "OLD", "--factor", "2"], "use --factor without --compare"),
        (["--compare"], "usage: bench"),
        (["--compare="], "usage: bench"),
    ]:
        result = tree.bench(*words)
        yield from expected(words, result, 2, line)
        if result.stdout or result.stderr.count("\n") != 1:
            yield f"{words}: should be refused in one line: {result.stdout}{result.stderr}"
    yield from expected("an unknown figure", tree.bench("--compare", "OLD", "--only", "none"), 2,
                        'no figure "none"; there are endless, kept, slow, gone')
    yield from expected("a folder that does not exist", tree.bench("--compare", "OLD", "--json", "none/c.json"), 2,
                        "dev: none/c.json cannot be written: No such file or directory")
    shutil.rmtree(tree.folder / ".git")
    yield from expected("no repository", tree.bench("--compare", "OLD"), 2, "needs git")


def main(tree):
    sys.path.insert(0, str(tree / "tools/dev"))
    import compare

    wrong = list(verdicts(compare))
    with tempfile.TemporaryDirectory() as folder:
        stub = Tree(tree, pathlib.Path(folder))
        wrong += [*comparisons(stub), *interruptions(stub), *refusals(stub)]
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1]).resolve()))
