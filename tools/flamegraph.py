#!/usr/bin/env python3
"""flamegraph.py TITLE ROOT...: a flame graph (SVG) of the samples on standard input.

Reads what `perf script -F ip,sym,dso` prints. Only samples below a function ROOT count, and each ROOT
has its own tower. The width of a box is its function's share of the samples."""

import html
import re
import sys

WIDTH, ROW, TOP = 1200, 17, 54  # pixels
SMALLEST = 1 / 300  # part of all samples: a narrower box has no room for its name
LETTER = 6.3  # pixels
KERNEL = 3  # functions: those further in are the drivers of one machine
WRAPPERS = r"(void )?(std|__gnu_cxx)::|\[unknown\]|entry_SYSCALL|do_syscall|__(x64|do)_sys_"
COLOURS = (  # of the file that holds the function
    ("plug-in", "#a8d8a0", r"libClockService"),
    ("host with SQLite", "#f4d77e", r"clockhost|libsqlite3"),
    ("kernel", "#e8b08c", r"\[kernel|\[vdso"),
    ("libraries", "#d4d4d4", r""),
)


class Box:
    def __init__(self):
        self.samples, self.colour, self.above = 0, "", {}


def short(name):
    """The function's name without template arguments, the usual namespaces and the compiler's marks."""
    name = name.replace("(anonymous namespace)::", "").replace("[abi:cxx11]", "")
    while (less := re.sub(r"<[^<>]*>|\{[^{}]*\}(#\d+)?", "", name)) != name:
        name = less
    return re.sub(r"\(.*|@.*|^(host|nlohmann::\w+(::detail)?)::", "", name).strip(":") or "(lambda)"


def frames(sample):
    """Outermost first: pairs of name and file, without wrappers that say nothing."""
    lines = (re.match(r"\s+[0-9a-f]+ (.+) \((.*)\)$", line) for line in reversed(sample.splitlines()))
    called = [line.groups() for line in lines if line and not re.match(WRAPPERS, line[1])]
    outside = sum("[kernel" not in file for _, file in called)
    return called[: outside + KERNEL]


def add(box, path):
    box.samples += 1
    for name, file in path:
        box = box.above.setdefault(short(name), Box())
        box.colour = next(colour for _, colour, files in COLOURS if re.search(files, file))
        box.samples += 1


def place(box, left, level, whole):
    """The boxes above this one: pixels from the left, level from 0, name, box."""
    for name, above in sorted(box.above.items()):
        if above.samples >= SMALLEST * whole:
            yield left, level, name, above
            yield from place(above, left, level + 1, whole)
        left += above.samples / whole * WIDTH


def svg(title, whole):
    boxes = list(place(whole, 0, 0, whole.samples))
    height = TOP + ROW * (1 + max(level for _, level, *_ in boxes))
    yield f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {height}"'
    yield ' font-family="monospace" font-size="10.5"><rect width="100%" height="100%" fill="#fff"/>'
    yield f'<text x="8" y="20" font-size="15">{html.escape(title)} ({whole.samples} samples)</text>'
    for i, (name, colour, _) in enumerate(COLOURS):
        yield f'<rect x="{8 + i * 110}" y="30" width="12" height="12" fill="{colour}"/>'
        yield f'<text x="{25 + i * 110}" y="40">{name}</text>'
    for left, level, name, box in boxes:
        y, width = height - ROW * (level + 1), box.samples / whole.samples * WIDTH
        room = int((width - 4) / LETTER)
        text = name if len(name) <= room else name[: room - 2] + ".." if room > 4 else ""
        yield f"<g><title>{html.escape(name)}: {box.samples / whole.samples:.1%}</title>"
        yield f'<rect x="{left:.1f}" y="{y}" width="{width - 0.6:.1f}" height="16" fill="{box.colour}"/>'
        yield f'<text x="{left + 2:.1f}" y="{y + 12}">{html.escape(text)}</text></g>'
    yield "</svg>"


def main(title, *roots):
    whole = Box()
    for sample in sys.stdin.read().split("\n\n"):
        path = frames(sample)
        at = [i for i, (name, _) in enumerate(path) if name in roots]
        if at:
            add(whole, path[at[0] :])
    if whole.samples == 0:
        sys.exit("flamegraph: no sample is below " + " or ".join(roots))
    print("\n".join(svg(title, whole)))


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit("usage: flamegraph.py TITLE ROOT... <SAMPLES >SVG")
    main(*sys.argv[1:])
