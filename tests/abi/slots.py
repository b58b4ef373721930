"""Checks the order of virtual slots and of bases: slots.py COMPILER OPTION...

Compares the compiler's class dump of slots.cpp with slots.txt.
"""

import difflib
import pathlib
import re
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).parent
STRING = re.compile(r"std::__cxx11::basic_string<char, [^>]*>, std::allocator<char> ?>")
STREAM = "std::basic_iostream<char, std::char_traits<char> >"


def dump(command):
    with tempfile.TemporaryDirectory() as folder:
        classes = pathlib.Path(folder) / "classes"
        source = str(HERE / "slots.cpp")
        options = ["-fsyntax-only", f"-fdump-lang-class={classes}", source]
        subprocess.run([*command, *options], check=True)
        return classes.read_text()


def demangled(text):
    text = subprocess.check_output(["c++filt"], input=text, text=True)
    return STRING.sub("string", text).replace(STREAM, "iostream").replace("[abi:cxx11]", "")


def tables_of(block):
    """The virtual tables of a class after its first one, each as a list of entries."""
    tables = []
    for line in block.splitlines():
        if re.match(r"\d+ +\(int \(\*\)\(\.\.\.\)\)-\d+$", line):
            tables.append([])
        elif tables and "_ZTI" not in line and re.match(r"\d+ +\(int", line):
            tables[-1].append(re.sub(r".*\(\.\.\.\)\)(\w+::)?", "", line))
    return tables


def slots_of(probe, block):
    tables = ["\n".join(entries) for entries in tables_of(block)]
    text = demangled("\n--\n".join(tables))
    text = text.replace(f"non-virtual thunk to {probe}::", "")
    return text.replace(f"~{probe}()\n~{probe}()", "~").splitlines()


def bases_of(block):
    """The bases of a class, without the class itself."""
    return re.findall(r"^(\w+) \(0x", block, re.MULTILINE)[1:]


def read_dump(text):
    found = {}
    for block in re.split(r"\n\n+", text):
        head = block.partition("\n")[0]
        if match := re.fullmatch(r"Vtable for (\w+)Probe", head):
            found[match[1]] = slots_of(match[1] + "Probe", block)
        elif match := re.fullmatch(r"Class (ClockService|ClockServiceObserverProxy)", head):
            found[f"bases of {match[1]}"] = bases_of(block)
    return found


def read_expected():
    expected = {}
    for line in (HERE / "slots.txt").read_text().splitlines():
        if line.startswith("["):
            rows = expected[line.strip("[]")] = []
        elif line and not line.startswith("#"):
            rows.append(line)
    return expected


def main(command):
    expected, found = read_expected(), read_dump(dump(command))
    wrong = sorted(set(expected) ^ set(found))
    for name in wrong:
        print(f"{name}: only in {'the dump' if name in found else 'slots.txt'}")
    for name in sorted(set(expected) & set(found)):
        if expected[name] != found[name]:
            wrong.append(name)
            print(f"{name}:", *difflib.ndiff(expected[name], found[name]), sep="\n")
    print(f"{len(expected) - len(wrong)} of {len(expected)} classes as expected")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
