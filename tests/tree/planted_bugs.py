"""Checks that each planted bug can be planted: its source has the text that it replaces.

Usage: planted_bugs.py TREE"""

import pathlib
import sys


def main(tree):
    sys.path.insert(0, str(pathlib.Path(tree, "tools/mutate")))
    import planted

    missing = [f'src/{source} has no "{before}"' for _, source, before, _ in planted.BUGS
            if before not in pathlib.Path(tree, "src", source).read_text()]
    print(*missing, sep="\n")
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
