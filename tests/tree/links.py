"""Checks that the links between the documents resolve: links.py TREE

Each relative link of a Markdown file names a file or folder of the tree and, after a #, one of its
headings.
"""

import pathlib
import re
import sys

SKIPPED = re.compile(r"(^|/)(\.[^/]+|build)/")
FENCED = re.compile(r"^```.*?^```", re.MULTILINE | re.DOTALL)
LINK = re.compile(r"\]\((?!https?:|mailto:)([^)#\s]*)(?:#([^)\s]*))?\)")
HEADING = re.compile(r"^#+ (.*)$", re.MULTILINE)


def prose_of(path):
    return FENCED.sub("", path.read_text())


def anchors_of(path):
    """The anchors of a file: its headings in lower case, without punctuation, with hyphens for blanks."""
    plain = (re.sub(r"[^\w\- ]", "", heading.lower()) for heading in HEADING.findall(prose_of(path)))
    return {heading.replace(" ", "-") for heading in plain}


def fault_of(path, name, anchor):
    target = path.parent / name if name else path
    if not target.exists():
        return f"no file {name}"
    if anchor and anchor not in anchors_of(target):
        return f"no heading #{anchor} in {target.name}"
    return None


def faults(tree):
    for path in sorted(tree.rglob("*.md")):
        place = path.relative_to(tree)
        if SKIPPED.search(str(place)):
            continue
        for name, anchor in LINK.findall(prose_of(path)):
            if fault := fault_of(path, name, anchor):
                yield f"{place}: {fault}"


def main(tree):
    found = list(faults(pathlib.Path(tree).resolve()))
    print(*found, sep="\n")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
