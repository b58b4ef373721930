"""Checks that the plug-in and the programs are hardened: hardening.py READELF NM CHECKED_SIZES FILE...

CHECKED_SIZES: 1 if the C library checks sizes in this build (_FORTIFY_SOURCE), otherwise 0.
"""

import re
import subprocess
import sys


def output(*command):
    return subprocess.check_output(command, text=True)


def rules(readelf, nm, file):
    """Each rule's name in the report, and whether it holds for the file."""
    dynamic = output(readelf, "-dW", file)
    segments = output(readelf, "-lW", file)
    stack = re.search(r"GNU_STACK.* (\S+) +0x\w+$", segments, re.MULTILINE)
    yield "is position independent", re.search(r"Type:\s+DYN\b", output(readelf, "-hW", file))
    if "INTERP" in segments:
        yield "is a position independent program", re.search(r"FLAGS_1.*\bPIE\b", dynamic)
    yield "has read-only relocations", "GNU_RELRO" in segments
    yield "binds all symbols at start", re.search(r"FLAGS\).*\bBIND_NOW\b|FLAGS_1.*\bNOW\b", dynamic)
    yield "has a stack that is not executable", stack and "E" not in stack[1]
    yield "has no segment that is writable and executable", not re.search(r" RWE +0x", segments)
    yield "has no relocations in its code", "TEXTREL" not in dynamic
    yield "has a stack protector", "__stack_chk_fail@" in output(nm, "-D", "-u", file)


def has_checked_sizes(nm, file):
    return re.search(r" __\w+_chk@", output(nm, "-D", "-u", file))


def main(readelf, nm, checked_sizes, *files):
    wrong = [f"{file}: not true: {rule}" for file in files
             for rule, holds in rules(readelf, nm, file) if not holds]
    if checked_sizes == "1":
        wrong += [f"{file}: not true: has sizes checked" for file in files
                  if not has_checked_sizes(nm, file)]
    for line in wrong:
        print(line)
    return 1 if wrong or not files else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
