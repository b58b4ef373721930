"""Checks that the plug-in exports its three factories and nothing else: exports.py NM PLUGIN"""

import subprocess
import sys

FACTORIES = ["createClockService", "createClockServiceInvoker", "createClockServiceObserverProxy"]


def main(nm, plugin):
    listing = subprocess.check_output([nm, "-D", "--defined-only", plugin], text=True)
    found = sorted(line.split()[-1] for line in listing.splitlines())
    for name in sorted(set(found) - set(FACTORIES)):
        print(f"must not be exported: {name}")
    for name in sorted(set(FACTORIES) - set(found)):
        print(f"must be exported: {name}")
    return 0 if found == FACTORIES else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
