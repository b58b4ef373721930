"""The arguments of ./dev mutate. options.py TREE [ARGUMENT]... checks them before anything is built,
and prints the targets to build for them."""

import argparse
import os
import pathlib
import re
import sys

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / "dev"))

from cases import Shard
from programs import BODIES, PLUGIN, body_of, targets

USAGE = "mutate [--seed N] [--count N] [--jobs N] [--shard I/N] [--results FILE] [FILE | FOLDER]..."


class Parser(argparse.ArgumentParser):
    def error(self, message):
        self.exit(2, f"dev: {USAGE}: {message}\n")


def options(tree, words):
    parser = Parser(add_help=False, allow_abbrev=False)
    parser.add_argument("--seed", type=at_least(0), default=1)  # which sample
    parser.add_argument("--count", type=at_least(0), default=200)  # mutants that compile; 0: all
    parser.add_argument("--jobs", type=at_least(1), default=processors())  # number of parallel jobs
    parser.add_argument("--shard", type=shard, default=Shard())  # each N-th mutant
    parser.add_argument("--results", default="")  # a file for ./dev merge
    parser.add_argument("places", nargs="*", default=PLUGIN)
    chosen = parser.parse_args(words)
    if 0 < chosen.count < chosen.shard.of:
        parser.error(f"--count {chosen.count} is too little for {chosen.shard.of} shards")
    sources = all_files(tree)
    chosen.files = []
    for place in chosen.places:
        files = [path for path in sources if f"{path}/".startswith(f"{place.rstrip('/')}/")]
        if not files:
            parser.error(f'"{place}" is not a source or folder in {", ".join(BODIES)}')
        chosen.files += files
    chosen.files = list(dict.fromkeys(chosen.files))
    return chosen


def at_least(least):
    def number(word):
        if re.fullmatch(r"[0-9]{1,9}", word) and int(word) >= least:
            return int(word)
        raise argparse.ArgumentTypeError(f'"{word}" is not a whole number of at least {least}')

    return number


def shard(word):
    try:
        return Shard(word)
    except ValueError as error:
        raise argparse.ArgumentTypeError(str(error)) from None


def processors():
    """The number of processors that this process may use."""
    return len(os.sched_getaffinity(0))


def all_files(tree):
    paths = [path for body in BODIES for path in (tree / body).rglob("*")]
    sources = [str(path.relative_to(tree)) for path in paths if path.suffix in (".h", ".cpp")]
    return sorted(sources, key=lambda path: (BODIES.index(body_of(path)), path))


if __name__ == "__main__":
    print(*targets(options(pathlib.Path(sys.argv[1]), sys.argv[2:]).files))
