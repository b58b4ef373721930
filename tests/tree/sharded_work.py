"""Tests how long work is split into shards, and how their results are joined: sharded_work.py TREE"""

import json
import os
import pathlib
import pty
import subprocess
import sys
import tempfile

# Shards, and the word that the refusal must have; none: accepted.
SHARDS = [("1/1", ""), ("2/4", ""), ("0/2", "shard"), ("3/2", "shard"), ("1", "shard"), ("a/b", "shard"), ("", "takes I/N")]


CTEST = """      Start  1: a
 1/3 Test  #1: a ....   Passed    0.01 sec
 2/3 Test  #2: b ....***Failed    0.01 sec
output of b
 3/3 Test  #3: c ....***Skipped   0.01 sec
"""


def on_terminal(tool):
    """With standard error on a terminal, and in CI."""
    for variables, line in (({}, "2 of 3 tests, 0:01 left"), ({"CI": "true"}, "")):
        terminal, other = pty.openpty()
        environment = {name: value for name, value in os.environ.items() if name != "CI"} | variables
        text = subprocess.run([*tool.program, "progress", "tests"], input=CTEST, stdout=subprocess.PIPE, stderr=other,
                              env=environment, text=True).stdout  # fmt: skip
        os.write(other, b"\0")  # reading does not wait
        shown = os.read(terminal, 10000).decode()
        os.close(terminal), os.close(other)
        failed = "".join(each for each in CTEST.splitlines(True) if "Failed" in each or "output" in each)
        if text != (failed if line else CTEST) or line not in shown or (shown == "\0") == bool(line):
            yield f"progress on a terminal with {variables}: {text!r}, {shown!r}"


class Tool:
    def __init__(self, tree, folder):
        self.program = [sys.executable, "-B", str(tree / "tools/dev/cases.py")]
        self.folder = folder

    def __call__(self, *words, text=""):
        return subprocess.run([*self.program, *words], input=text, capture_output=True, text=True)

    def shard(self, number, of, cases=5, bad="none"):
        """The file of a shard of the cases 1 to `cases`, of which `bad` fails."""
        path = self.folder / f"{number}-of-{of}-{cases}-{bad}.jsonl"
        self("run", "numbers", "--shard", f"{number}/{of}", "--results", str(path),
             "test", "{}", "!=", bad, text="".join(f"{case}\n" for case in range(1, cases + 1)))  # fmt: skip
        return str(path)


def cut(path):
    """The file as an ended shard leaves it: in the middle of a line."""
    whole = pathlib.Path(path)
    lines = whole.read_text().splitlines(keepends=True)
    whole.with_suffix(".cut").write_text("".join(lines[:-1])[:-3])
    return str(whole.with_suffix(".cut"))


def merges(tool):
    """Files, the exit status of their merge, and a part of its output."""
    both = [tool.shard(1, 2), tool.shard(2, 2)]
    other = tool.folder / "other"
    other.write_text("{}\n")
    prose = tool.folder / "prose"
    prose.write_text("# Clock\n")
    return [
        ([tool.shard(1, 1)], 0, "numbers: 5 of 5 cases, 5 passed"),
        (both, 0, "numbers: 5 of 5 cases, 5 passed"),
        ([both[1], tool.shard(1, 2, bad="3")], 1, "failed: 3\n"),
        (both[1:], 1, "lost: shard 1/2"),
        ([both[0], cut(both[1])], 1, "incomplete: "),
        ([both[0], both[0]], 2, "in two files"),
        ([both[0], tool.shard(2, 3)], 2, "the others are"),
        ([both[0], tool.shard(2, 2, cases=6)], 2, "the others are"),
        ([str(tool.folder / "none")], 2, "none cannot be read: No such file"),
        ([str(other)], 2, "other is not a file of results"),
        ([str(prose)], 2, "prose is not a file of results"),
    ]


# Command lines of ./dev that are refused before anything is built, and a part of the refusal.
WRONG_WORDS = [
    (["simulate", "--shard", "1/2"], "--shard needs --seed"),
    (["simulate", "--seed", "1", "--shard", "3/2"], "is not a shard"),
    (["simulate", "--results"], "takes FILE"),
    (["scenarios"], "usage: scenarios"),
    (["scenarios", "--shard", "x", "."], "is not a shard"),
    (["scenarios", "/no such"], "no scenario or folder"),
    (["fuzz", "--shard", "3/2"], "is not a shard"),
    (["fuzz", "--results", "/no such/file"], "No such file"),
    (["merge"], "usage: merge"),
]


def refusals(tree):
    for words, part in WRONG_WORDS:
        ended = subprocess.run([str(tree / "dev"), *words], capture_output=True, text=True)
        if ended.returncode != 2 or part not in ended.stderr:
            yield f"./dev {words}: {ended}"


def faults(tool):
    for shard, word in SHARDS:
        ended = tool("check", "--shard", shard)
        if ended.returncode != (2 if word else 0) or word not in ended.stderr:
            yield f"--shard {shard!r}: {ended}"
    for files, status, part in merges(tool):
        ended = tool("merge", *files)
        if ended.returncode != status or part not in ended.stdout + ended.stderr:
            yield f"merge {files}: {ended}"
    if "\r" in tool("run", "numbers", "true", text="1\n").stderr:
        yield "a progress line outside a terminal"
    if (ended := tool("progress", "tests", text=CTEST + "1/2\n")).stdout != CTEST or ended.stderr:
        yield f"progress outside a terminal: {ended}"
    yield from on_terminal(tool)


def main(tree):
    with tempfile.TemporaryDirectory() as folder:
        tree = pathlib.Path(tree).resolve()
        found = [*faults(Tool(tree, pathlib.Path(folder))), *refusals(tree)]
    print(*found, sep="\n")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
