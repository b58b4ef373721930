"""Runs the example's loader: loader.py PLUGIN NO_CLOCK LOADER...

NO_CLOCK: a library with the same factory, which returns no clock.

The last words are the command that starts the loader, with an emulator before it if it needs one.
"""

import pathlib
import subprocess
import sys

NEW_YORK = ["TimezoneOffset=-5", "DaylightSavingActive=true", "AutoDaylightSavingEnabledDevice=true",
            "DaylightSavingZoneIDDevice=12"]

# The words after the plug-in, and what is printed.
ROWS = [
    (["--hours", "2"], "16.06.16 00:00\n01:00\n02:00\n"),
    # a value with a character that is escaped in the document of settings
    (["--hours", "1", "NTPsharedSecret=<&>", "TimezoneOffset=9"], "16.06.16 09:00\n10:00\n"),
    (["--hours", "1", "FallbackDateTime=2027-12-31T23:15:00+00:00", "DateFormat=1"],
     "27-12-31 23:15\n00:00\n2028-01-01\n"),
    (["--hours", "2", "FallbackDateTime=2026-03-08T06:30:00+00:00", *NEW_YORK],
     "08.03.26 01:30\n03:00\n04:00\n"),
]


def run(loader, *words, folder=None):
    return subprocess.run([*loader, *words], capture_output=True, text=True, timeout=60, cwd=folder)


def faults_of(plugin, no_clock, loader):
    for words, expected in ROWS:
        result = run(loader, plugin, *words)
        if (result.returncode, result.stdout) != (0, expected):
            yield f"{words}: {result}, should print {expected!r}"
    path = pathlib.Path(plugin)
    result = run(loader, path.name, "--hours", "0", folder=path.parent)
    if (result.returncode, result.stdout) != (0, "16.06.16 00:00\n"):
        yield f"a plug-in in the current folder: {result}"
    for words, status, error in [
        ([], 2, "usage: loader PLUGIN"),
        ([plugin, "unknown"], 2, "usage: loader PLUGIN"),
        ([plugin, "--hours", "x"], 2, "usage: loader PLUGIN"),
        ([plugin, "--hours", "-1"], 2, "usage: loader PLUGIN"),
        ([plugin + ".gone"], 1, "loader: "),
        ([no_clock], 1, f"loader: {no_clock} has no ClockServiceIfc; build it"),
    ]:
        result = run(loader, *words)
        one_line = result.stderr.count("\n") == 1
        if result.returncode != status or not one_line or not result.stderr.startswith(error):
            yield f"{words}: {result}, should end with {status} and {error!r}"


def main(plugin, no_clock, *loader):
    wrong = list(faults_of(plugin, no_clock, loader))
    print(*wrong, sep="\n")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
