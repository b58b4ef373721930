"""Tests what ./dev answers at once: refusals, help and version. dev_words.py TREE"""

import pathlib
import re
import subprocess
import sys

# Words that are refused before anything is built, and the line.
REFUSED = [
    ("nope", 'unknown verb "nope"; "./dev help" lists them'),
    ("../dev", 'unknown verb "../dev"; "./dev help" lists them'),
    ("help nope", 'unknown verb "nope"; "./dev help" lists them'),
    ("lint --all", '"lint" takes no arguments; write ./dev lint'),
    ("coverage host", '"coverage" takes no arguments; write ./dev coverage'),
    ("install --prefix=/x", 'unknown option "--prefix"; "./dev install --help" shows what there is'),
    ("build --clean", 'unknown option "--clean"; "./dev build --help" shows what there is'),
    ("powercuts --cut 4", 'unknown option "--cut"; "./dev powercuts --help" shows what there is'),
    ("load --second=4", 'unknown option "--second"; "./dev load --help" shows what there is'),
    ("fresh --only x", 'unknown option "--only"; "./dev fresh --help" shows what there is'),
    ("simulate --seed -1", 'unknown option "-1"; "./dev simulate --help" shows what there is'),
    ("simulate --seed 5x", '--seed: "5x" is not a whole number of up to 18 digits; usage: '),
    ("simulate --steps 0", '--steps: "0" is not a whole number from 1 to 999999999; usage: '),
    ("simulate 5", '"5" is not an option; usage: '),
    ("bench --json", "--json: its value is missing; usage: "),
    ("bench 5", '"5" is not understood; usage: '),
    ("scenarios", "name a scenario or a folder after the options; usage: "),
    ("merge", "name files of results; usage: "),
]


def run(tree, words):
    return subprocess.run([str(tree / "dev"), *words.split()], capture_output=True, text=True)


def faults(tree):
    for words, line in REFUSED:
        ended = run(tree, words)
        one = ended.stderr.startswith(f"dev: {line}") and ended.stderr.count("\n") == 1
        if ended.returncode != 2 or not one or ended.stdout:
            yield f"./dev {words}: {ended}"
    version = re.search(r"^project\(.* VERSION ([0-9.]+)", (tree / "CMakeLists.txt").read_text(), re.M)[1]
    verbs = sorted(path.stem for path in (tree / "tools/dev").glob("*.sh"))
    for words, text in [("--version", f"{version}\n"), *((f"help {verb}", f"  {verb}") for verb in verbs),
                        ("powercuts --help", "  powercuts [--seed N] [--cuts N] "),
                        ("test --help", "  test [CTEST ")]:  # fmt: skip
        ended = run(tree, words)
        if ended.returncode != 0 or text not in ended.stdout or ended.stdout.count("\n") > 2:
            yield f"./dev {words}: {ended}"


def main(tree):
    found = list(faults(pathlib.Path(tree).resolve()))
    print(*found, sep="\n")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
