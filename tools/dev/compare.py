"""Measures two builds of the benchmark alternately: compare.py PROGRAM PROGRAM COMMIT [--only=NAME]... [--json=FILE]

The first program is this tree's, the second that of COMMIT. The exit status is 1 when a figure of this
tree is slower (a time) or more (a count) beyond its noise, or cannot be measured.
"""

import argparse
import collections
import contextlib
import itertools
import json
import os
import re
import signal
import statistics
import subprocess
import sys
import tempfile

from cases import Progress

ROUNDS = 8  # the fewest with which one disturbed run does not hide a change
CHANCE = 0.02  # that a figure which did not move is said to have moved
LEAST_CHANGE = 0.06  # of a time or of memory: a build of the same source at another path differed by 5 %
WORSE = ("slower", "more", "fails here")
COLUMNS = "{:42} {:>12} {:>12} {:>9} {:>7}  {}"

Row = collections.namedtuple("Row", "name figure unit here there change noise verdict")


def chance_of(here, there):
    """The probability that equal distributions are ranked this unequally (exact Mann-Whitney test)."""
    together = sorted(here + there)
    ranks = [together.index(x) + together.count(x) / 2 for x in here + there]
    expected = sum(ranks) / 2
    found = abs(sum(ranks[: len(here)]) - expected)
    sums = [sum(some) for some in itertools.combinations(ranks, len(here))]
    return sum(abs(one - expected) >= found for one in sums) / len(sums)


def noise_of(numbers):
    """The median distance from the median. One disturbed run hardly changes it."""
    middle = statistics.median(numbers)
    return statistics.median(abs(each - middle) for each in numbers) / middle if middle else 0.0


def verdict_on(unit, here, there, change):
    """Every change of a count matters, because addresses of code do not affect it. A count has no unit."""
    small = unit != "" and abs(change) < LEAST_CHANGE
    if small or chance_of(here, there) >= CHANCE:
        return "same"
    better = (change > 0) == unit.endswith("/s")
    return ("less" if better else "more") if unit in ("", "KiB") else ("faster" if better else "slower")


def row_of(name, here, there):
    """here, there: the figure's entries in each JSON of that side; none if that side does not have it."""
    entry = (here + there)[0]
    row = Row(name, entry["figure"], entry["unit"], None, None, None, None, "")
    for side, entries in (("here", here), ("there", there)):
        failures = [each["failure"] for each in entries if "failure" in each]
        if failures:
            return row._replace(verdict=f"fails {side}: {failures[0]}")
    values = [[each["value"] for each in entries] for entries in (here, there)]
    middles = [statistics.median(each) if each else None for each in values]
    row = row._replace(here=middles[0], there=middles[1])
    if not here or not there:
        return row._replace(verdict="only here" if here else "only there")
    change = middles[0] / middles[1] - 1 if middles[1] else float(middles[0] != middles[1])
    return row._replace(change=change, noise=max(map(noise_of, values)),
                        verdict=verdict_on(entry["unit"], *values, change))


def number(value, unit):
    if value is None:
        return "-"
    return f"{value:.0f} {unit}" if abs(value) >= 1000 else f"{value:.4g} {unit}"


def percent(part, form):
    return "" if part is None else f"{part * 100:{form}} %"


def printed(row):
    return COLUMNS.format(row.figure, number(row.here, row.unit), number(row.there, row.unit),
                          percent(row.change, "+.1f"), percent(row.noise, ".1f"), row.verdict).rstrip()


def refuse(text):
    print(f"dev: {text}", file=sys.stderr)
    sys.exit(2)


def names_of(program):
    text = subprocess.run([program, "--help"], capture_output=True, text=True, check=True).stdout
    names = re.search(r"--only NAME[^{]*\{([^}]*)\}", text)
    return names[1].split(",") if names else refuse(f"{program} lists no figures; compare with a later commit")


def measured(program, name):
    """Runs the program, and returns the figure's entry in its JSON. An interruption ends its process group, too."""
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder:
        file = os.path.join(folder, "bench.json")
        # The widest bound: a figure over its bound would be measured again until it is under it.
        process = subprocess.Popen([program, f"--only={name}", f"--json={file}", "--factor=100"], process_group=0,
                                   env=os.environ | {"TMPDIR": folder}, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        try:
            error = process.communicate()[1]
        except BaseException:
            with contextlib.suppress(ProcessLookupError):  # it may have ended meanwhile
                os.killpg(process.pid, signal.SIGTERM)
            process.wait()
            raise
        if process.returncode not in (0, 1) or not os.path.exists(file) or not os.path.getsize(file):
            refuse(f"{program} cannot measure {name}: {error}")
        with open(file) as text:
            return json.load(text)["figures"][0]


def all_measured(programs, names, progress):
    """Returns the entries by name, for each side. Each round measures both; the rounds take turns in which is first."""
    sides = [{name: [] for name in names} for _ in programs]
    known = [names_of(program) for program in programs]
    for number_of_round, name in itertools.product(range(ROUNDS), names):
        for side in (0, 1) if number_of_round % 2 == 0 else (1, 0):
            if name in known[side]:
                sides[side][name].append(measured(programs[side], name))
            progress.step()
    return sides


def wanted(programs, only):
    names = list(dict.fromkeys(itertools.chain(*map(names_of, programs))))
    unknown = [name for name in only if name not in names]
    if unknown:
        refuse(f"no figure \"{unknown[0]}\"; there are {', '.join(names)}")
    return [name for name in names if name in only] if only else names


def opened(name):
    try:
        return open(name, "w")
    except OSError as error:
        refuse(f"{name} cannot be written: {error.strerror}")


def compare(options):
    names = wanted(options.programs, options.only)
    file = opened(options.json)
    progress = Progress("runs", 2 * ROUNDS * len(names))
    try:
        here, there = all_measured(options.programs, names, progress)
    finally:
        progress.end()
    rows = [row_of(name, here[name], there[name]) for name in names]
    print(COLUMNS.format("figure", "this tree", options.commit, "change", "noise", "verdict"))
    for row in rows:
        print(printed(row))
    with file:
        json.dump({"commit": options.commit, "rounds": ROUNDS, "figures": [row._asdict() for row in rows]},
                  file, indent=2)
    return 1 if any(row.verdict.startswith(WORSE) for row in rows) else 0


def main(words):
    parser = argparse.ArgumentParser(prog="bench")
    parser.add_argument("programs", nargs=2)
    parser.add_argument("commit")
    parser.add_argument("--only", action="append", default=[])
    parser.add_argument("--json", default=os.devnull)
    for ending in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(ending, signal.default_int_handler)
    try:
        return compare(parser.parse_args(words))
    except KeyboardInterrupt:
        return 130


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
