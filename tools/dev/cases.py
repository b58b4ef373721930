"""Runs the cases of long work, shows progress, and joins the results of several machines.

cases.py run WORK [--shard I/N] [--results FILE] COMMAND...   cases from standard input, one a line
cases.py merge FILE...
cases.py progress WORK                                        lines from standard input

`run` starts COMMAND for each case, with the case in place of "{}"; the case passes if its exit status is 0.
A shard is each N-th case, from the I-th. Results are JSON lines: the first names the work, the shard and
all cases, the last says that the shard is complete. `merge` exits with 0 if each case of each shard passed,
with 1 if one failed or is missing. `progress` copies lines; on a terminal it shows one line of progress in place
of those that say that part N of M passed. The status is 2 for wrong words, for files that do not belong together,
and for a file that cannot be read or written.
"""

import contextlib
import json
import math
import os
import re
import subprocess
import sys
import time

PASSED = "passed"
FAILED = "failed"


class Progress:
    """One line on a terminal: done, of how many, time left. Nothing elsewhere, and nothing in CI."""

    def __init__(self, what, total):
        self.what, self.total, self.done = what, total, 0
        self.started = time.monotonic()
        self.shown = sys.stderr.isatty() and "CI" not in os.environ
        self.show()

    def step(self):
        self.done += 1
        self.show()

    def show(self):
        if self.shown and self.total:
            print(f"\r\x1b[K{self.text()}", end="", file=sys.stderr, flush=True)

    def text(self):
        text = f"{self.done} of {self.total} {self.what}"
        if 0 < self.done < self.total:
            left = math.ceil((time.monotonic() - self.started) / self.done * (self.total - self.done))
            text += f", {left // 60}:{left % 60:02} left"
        return text

    @contextlib.contextmanager
    def hidden(self):
        """For lines of output in between."""
        if self.shown:
            print("\r\x1b[K", end="", file=sys.stderr, flush=True)
        yield
        self.show()

    def end(self):
        if self.shown:
            print("\r\x1b[K", end="", file=sys.stderr, flush=True)
        self.shown = False


class Shard:
    """I/N: each N-th case, from the I-th."""

    def __init__(self, text="1/1"):
        match = re.fullmatch(r"([1-9][0-9]{0,5})/([1-9][0-9]{0,5})", text)
        if not match or int(match[1]) > int(match[2]):
            raise ValueError(f'"{text}" is not a shard; write I/N with I from 1 to N, as 2/4')
        self.number, self.of = int(match[1]), int(match[2])

    def of_cases(self, cases):
        return cases[self.number - 1 :: self.of]

    def share(self, count):
        """Its part of a number."""
        return len(range(self.number - 1, count, self.of))


class Results:
    """A file of results, written case by case; `path` may be empty for none."""

    def __init__(self, path, work, shard, total=None):
        self.file = open(path, "w", encoding="utf-8") if path else None
        self.write({"work": work, "shard": shard.number, "of": shard.of, "total": total})

    def add(self, case, result):
        self.write({"case": case, "result": result})

    def end(self):
        self.write({"end": True})

    def write(self, line):
        if self.file:
            print(json.dumps(line), file=self.file, flush=True)


def run(work, shard, path, command):
    cases = [line.rstrip("\n") for line in sys.stdin if line.strip()]
    chosen = shard.of_cases(cases)
    results = Results(path, work, shard, len(cases))
    progress = Progress(work, len(chosen))
    failed = 0
    for case in chosen:
        words = [case if word == "{}" else word for word in command]
        ended = subprocess.run(words, stdin=subprocess.DEVNULL, capture_output=True, text=True)
        passed = ended.returncode == 0
        failed += not passed
        with progress.hidden():
            sys.stdout.write(ended.stdout)
            sys.stderr.write(ended.stderr)
            sys.stdout.flush()
        results.add(case, PASSED if passed else FAILED)
        progress.step()
    progress.end()
    results.end()
    print(f"{work}: {len(chosen)} cases, {len(chosen) - failed} passed, {failed} failed")
    return 1 if failed else 0


# "N/M" alone, or how ctest reports the end of a test; and what is left out beside a line of progress.
PART = re.compile(r" *(\d+)/(\d+)( Test +#|$)")
QUIET = re.compile(r" *\d+/\d+($| Test +#.*(Passed|Skipped))| +Start +\d+: ")


def progress_of(work):
    progress = Progress(work, 0)
    for line in sys.stdin:
        part = PART.match(line)
        if part:
            progress.done, progress.total = int(part[1]) - 1, int(part[2])
            progress.step()
        if QUIET.match(line) if progress.shown else part and not part[3]:
            continue
        with progress.hidden():
            print(line, end="", flush=True)
    progress.end()
    return 0


class WrongFiles(Exception):
    """The files do not belong together."""


def read(path):
    """The lines of a file; an unfinished last line does not count."""
    try:
        with open(path, encoding="utf-8") as file:
            lines = [json.loads(line) for line in file if line.endswith("\n")]
    except OSError as error:
        raise WrongFiles(f"{path} cannot be read: {error.strerror}") from None
    except ValueError:
        lines = []
    if not lines or not isinstance(lines[0], dict) or not {"work", "shard", "of"} <= lines[0].keys():
        raise WrongFiles(f"{path} is not a file of results; --results FILE writes one")
    return lines


def merge(paths):
    shards, first = {}, None
    for path in paths:
        head, *rest = read(path)
        whole = (head["work"], head["of"], head.get("total"))
        first = first or whole
        if whole != first:
            raise WrongFiles(f"{path}: {whole[0]}, shard of {whole[1]}; the others are {first[0]} of {first[1]}")
        if head["shard"] in shards:
            raise WrongFiles(f"{path}: shard {head['shard']} is in two files")
        shards[head["shard"]] = path, rest
    return summary(*first, shards)


def summary(work, of, total, shards):
    cases = [line for _, lines in shards.values() for line in lines if "case" in line]
    lost = [str(number) for number in range(1, of + 1) if number not in shards]
    broken = [path for path, lines in shards.values() if {"end": True} not in lines]
    counts = {}
    for line in cases:
        counts[line["result"]] = counts.get(line["result"], 0) + 1
        if line["result"] not in (PASSED, "found", "did not compile"):
            print(f"{line['result']}: {line['case']}")
    for number in lost:
        print(f"lost: shard {number}/{of}")
    for path in broken:
        print(f"incomplete: {path}")
    counted = "".join(f", {count} {result}" for result, count in sorted(counts.items()))
    print(f"{work}: {len(cases)}{'' if total is None else f' of {total}'} cases{counted}")
    bad = lost or broken or counts.get(FAILED) or (total is not None and len(cases) != total)
    return 1 if bad else 0


def options(words):
    """The shard, the file of results, and the words after them."""
    shard, path = Shard(), ""
    while words and words[0] in ("--shard", "--results"):
        if len(words) < 2 or not words[1]:
            raise ValueError(f"{words[0]} takes {'I/N' if words[0] == '--shard' else 'FILE'}")
        if words[0] == "--shard":
            shard = Shard(words[1])
        else:
            path = words[1]
        words = words[2:]
    return shard, path, words


def main(words):
    if words[0] == "merge" and len(words) > 1:
        return merge(words[1:])
    if words[0] == "run":
        return run(words[1], *options(words[2:]))
    if words[0] == "progress":
        return progress_of(words[1])
    if words[0] == "progress":
        return progress_of(words[1])
    if words[0] == "check":  # the options alone, before anything is built
        _, path, rest = options(words[1:])
        if path:
            open(path, "a", encoding="utf-8").close()
        return 2 if rest else 0
    print("usage: merge FILE...", file=sys.stderr)
    return 2


if __name__ == "__main__":
    try:
        sys.exit(main(sys.argv[1:]))
    except (ValueError, WrongFiles, OSError) as error:
        print(f"dev: {error}", file=sys.stderr)
        sys.exit(2)
    except KeyboardInterrupt:
        sys.exit("dev: interrupted")
