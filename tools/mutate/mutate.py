"""Changes the plug-in's sources, one place at a time, and lists the changes that no test notices.

mutate.py TREE BUILD "PROGRAM..." [--seed N] [--count N] [--jobs N] [FILE]...

The exit status is 0 when the tests find at least nine in ten.
"""

import argparse
import os
import pathlib
import queue
import random
import resource
import signal
import sys
import time
from concurrent.futures import ThreadPoolExecutor

from build import Build
from mutants import mutants_of
from running import HUNG, PASSED, Program, outcome_of
from workshop import BODIES, NO_BUILD, Workshop

LEAST_SCORE = 90.0  # per cent


def options(words):
    parser = argparse.ArgumentParser(prog="./dev mutate")
    parser.add_argument("--seed", type=int, default=1, help="which sample (default 1)")
    parser.add_argument("--count", type=int, default=200, help="how many; 0 is all (default 200)")
    parser.add_argument("--jobs", type=int, default=processors(), help="how many at a time")
    parser.add_argument("files", nargs="*", metavar="FILE", help="of src/ or include/ (default all)")
    return parser.parse_args(words)


def processors():
    """How many this process may use."""
    return len(os.sched_getaffinity(0))


def all_files(tree):
    paths = [path for body in BODIES for path in (tree / body).rglob("*")]
    return sorted(str(path.relative_to(tree)) for path in paths if path.suffix in (".h", ".cpp"))


def sample(tree, chosen):
    """The mutants to try; the same for the same tree, seed and files."""
    found = [
        mutant
        for path in chosen.files or all_files(tree)
        for mutant in mutants_of(path, (tree / path).read_text())
    ]
    random.Random(chosen.seed).shuffle(found)
    print(f"{len(found)} mutants, seed {chosen.seed}", flush=True)
    return found[: chosen.count or None]


def measured(build, names, place):
    """The programs, run on the unmutated tree: all must pass."""
    programs = [Program(name) for name in names]
    for program in programs:
        before = computed()
        outcome = outcome_of(program, build.folder / "bin/tests" / program.name, place)
        if outcome != PASSED:
            sys.exit(f"mutate: {program.name} {outcome} on the tree as it is")
        program.seconds = computed() - before
    return programs


def computed():
    """Seconds of the processor that the children took so far."""
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def verdicts_on(mutants, workshops):
    """Each mutant with its verdict, in order; a workshop takes one at a time."""
    free = queue.SimpleQueue()
    for workshop in workshops:
        free.put(workshop)

    def judged(mutant):
        workshop = free.get()
        try:
            return mutant, workshop.verdict(mutant)
        finally:
            free.put(workshop)

    with ThreadPoolExecutor(len(workshops)) as pool:
        yield from pool.map(judged, mutants)


def show(number, mutant, verdict):
    if verdict == PASSED:
        print(f"{mutant.path}:{mutant.line}: survived", *mutant.diff(), sep="\n  ", flush=True)
    if number % 50 == 0:
        print(f"{number} tried", flush=True)


def summary(verdicts, seconds):
    """Prints the figures and returns the score."""
    unbuilt, survived = verdicts.count(NO_BUILD), verdicts.count(PASSED)
    tried = len(verdicts) - unbuilt
    score = 100.0 * (tried - survived) / tried if tried else 100.0
    print(f"{tried} mutants, {tried - survived} found, {survived} survived: {score:.1f} %")
    print(f"{verdicts.count(HUNG)} of them hung, {unbuilt} more did not compile; {seconds:.0f} s")
    return score


def main(tree, place, names, *words):
    chosen = options(words)
    # Ended from outside it still ends what it has started.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    # A mutant may ask for all the memory and all the disk.
    resource.setrlimit(resource.RLIMIT_AS, (8 << 30, 8 << 30))
    resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 30, 1 << 30))
    tree, place = pathlib.Path(tree).resolve(), pathlib.Path(place).resolve()
    build = Build(tree, place / "base", names.split())
    programs = measured(build, names.split(), place / "temporary")
    mutants = sample(tree, chosen)
    folders = [place / f"job-{number + 1}" for number in range(chosen.jobs)]
    workshops = [Workshop(build, folder, programs) for folder in folders]
    started = time.monotonic()
    verdicts = []
    for mutant, verdict in verdicts_on(mutants, workshops):
        verdicts.append(verdict)
        show(len(verdicts), mutant, verdict)
    return 0 if summary(verdicts, time.monotonic() - started) >= LEAST_SCORE else 1


if __name__ == "__main__":
    try:
        sys.exit(main(*sys.argv[1:]))
    except KeyboardInterrupt:
        sys.exit("mutate: interrupted")
