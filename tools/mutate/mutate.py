"""Makes one change at a time to the sources, and lists the changes that no test notices.

mutate.py TREE BUILD [--seed N] [--count N] [--jobs N] [--shard I/N]
  [--results FILE] [FILE | FOLDER]...

The exit status is 0 if the tests find at least 90 % of them.
"""

import itertools
import pathlib
import queue
import resource
import signal
import sys
import time
from collections import deque
from concurrent.futures import ThreadPoolExecutor
from contextlib import closing

from build import Build
from mutants import Mutant, in_order, mutants_of
from options import options
from cases import Progress, Results
from programs import programs
from running import HUNG, PASSED, outcome_of
from workshop import NO_BUILD, NoLink, Workshop

LEAST_SCORE = 90.0  # per cent
MOST_UNBUILT = 20.0  # per cent; a few may be chance
CHANCE = 5
# In a file of results; every other verdict is "found".
RESULTS = {PASSED: "survived", NO_BUILD: "did not compile"}


def ordered(tree, chosen):
    """The mutants in the order to try them."""
    found = [
        mutant for path in chosen.files for mutant in mutants_of(path, (tree / path).read_text())
    ]
    print(f"{len(found)} mutants, seed {chosen.seed}", flush=True)
    return in_order(found, chosen.seed)


def measure(programs, folder):
    """Measures the processor time of each program on the unmutated tree, where all must pass."""
    for program in programs:
        before = processor_time()
        outcome = outcome_of(program, folder)
        if outcome != PASSED:
            sys.exit(f"mutate: {program.name} {outcome} on the unmutated tree")
        program.seconds = processor_time() - before


def processor_time():
    """The processor time of all children so far, in seconds."""
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def check(workshop, mutant):
    """An unchanged source must compile and pass in a workshop too."""
    verdict = workshop.verdict(Mutant(mutant.path, mutant.text, 0, 0, ""))
    if verdict != PASSED:
        sys.exit(f"mutate: {mutant.path}, unchanged, {verdict}")


def verdicts_on(mutants, workshops):
    """Each mutant with its verdict, in order. A workshop judges one mutant at a time."""
    free = queue.SimpleQueue()
    for workshop in workshops:
        free.put(workshop)

    def judged(mutant):
        workshop = free.get()
        try:
            return mutant, workshop.verdict(mutant)
        finally:
            free.put(workshop)

    pool = ThreadPoolExecutor(len(workshops))
    try:
        submitted = (pool.submit(judged, mutant) for mutant in mutants)
        ahead = deque(itertools.islice(submitted, 4 * len(workshops)))
        while ahead:
            yield ahead.popleft().result()
            ahead.extend(itertools.islice(submitted, 1))
    finally:
        pool.shutdown(cancel_futures=True)


def drawn(mutants, count, workshops, keep=lambda mutant, verdict: None):
    """The verdicts on mutants until `count` of them have compiled; on all if it is 0. `keep` gets each."""
    verdicts = []
    progress = Progress("mutants", count or len(mutants))
    with closing(verdicts_on(mutants, workshops)) as judged:
        for mutant, verdict in judged:
            verdicts.append(verdict)
            keep(mutant, verdict)
            with progress.hidden():
                show(len(verdicts), mutant, verdict, progress.shown)
            if verdict != NO_BUILD or count == 0:
                progress.step()
            if 0 < count == len(verdicts) - verdicts.count(NO_BUILD):
                break
    progress.end()
    return verdicts


def show(number, mutant, verdict, on_terminal):
    if verdict == PASSED:
        print(f"{mutant.path}:{mutant.line}: survived", *mutant.diff(), sep="\n  ", flush=True)
    if number % 50 == 0 and not on_terminal:
        print(f"{number} tried", flush=True)


def summary(verdicts, seconds):
    """Prints the figures; true if the tests found enough mutants, and enough of them compiled."""
    unbuilt, survived = verdicts.count(NO_BUILD), verdicts.count(PASSED)
    tried = len(verdicts) - unbuilt
    score = 100.0 * (tried - survived) / tried if tried else 0.0
    print(f"{tried} mutants, {tried - survived} found, {survived} survived: {score:.1f} %")
    print(f"{verdicts.count(HUNG)} of them hung, {unbuilt} more did not compile; {seconds:.0f} s")
    if unbuilt > max(CHANCE, MOST_UNBUILT / 100 * len(verdicts)):
        print(f"mutate: more than {MOST_UNBUILT:.0f} % did not compile")
        return False
    return score >= LEAST_SCORE


def limit_resources():
    """Keeps a mutant from taking all memory or disk space. The tests themselves set limits, and make
    sparse files of 2 GiB."""
    for what, most in ((resource.RLIMIT_AS, 8 << 30), (resource.RLIMIT_FSIZE, 3 << 30)):
        resource.setrlimit(what, (most, resource.getrlimit(what)[1]))


def main(tree, place, *words):
    tree, place = pathlib.Path(tree).resolve(), pathlib.Path(place).resolve()
    chosen = options(tree, words)
    # On SIGTERM, stop the children too.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    limit_resources()
    judges = programs(chosen.files)
    build = Build(tree, place / "base", {path for judge in judges for path in judge.executables})
    folders = [place / f"job-{number + 1}" for number in range(chosen.jobs)]
    workshops = [Workshop(build, folder, judges) for folder in folders]
    measure(judges, workshops[0].folder)
    mutants = chosen.shard.of_cases(ordered(tree, chosen))
    results = Results(chosen.results, "mutants", chosen.shard)
    started = time.monotonic()
    for mutant in mutants[:1]:
        check(workshops[0], mutant)

    def keep(mutant, verdict):
        results.add(f"{mutant.path}:{mutant.line}", RESULTS.get(verdict, "found"))

    verdicts = drawn(mutants, chosen.shard.share(chosen.count), workshops, keep)
    results.end()
    return 0 if summary(verdicts, time.monotonic() - started) else 1


if __name__ == "__main__":
    try:
        sys.exit(main(*sys.argv[1:]))
    except NoLink as error:
        sys.exit(f"mutate: {error}")
    except KeyboardInterrupt:
        sys.exit("mutate: interrupted")
