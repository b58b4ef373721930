"""Checks that the plug-in imports only names of platform/ and of the C and C++ libraries.

imports.py NM READELF PLUGIN PLATFORM_FOLDER
"""

import pathlib
import re
import subprocess
import sys

LIBRARY_VERSION = re.compile(r"@@?(GLIBC|GLIBCXX|CXXABI|CXXABI_ARM|GCC)_[\d.]+$")
# Weak names in every shared object of gcc and clang.
START_FILES = {"__gmon_start__", "_ITM_deregisterTMCloneTable", "_ITM_registerTMCloneTable"}
LIBRARIES = re.compile(r"(libstdc\+\+|libm|libgcc_s|libc|ld-linux[\w-]*)\.so(\.\d+)?$")


def platform_names(folder):
    """The classes, structs, enumerations and plain functions that the headers declare."""
    names = set()
    for header in pathlib.Path(folder).glob("*.h"):
        code = re.sub(r"//.*", "", header.read_text())
        names.update(re.findall(r"^(?:class|struct|enum)\s+(?:CLOCK_\w+\s+)?(\w+)[^;{]*\{", code, re.MULTILINE))
        names.update(re.findall(r"^(?:extern \"C\" )?\w+\s+(\w+)\(", code, re.MULTILINE))
    return names


def undefined_symbols(nm, plugin):
    listing = subprocess.check_output([nm, "-D", "-u", plugin], text=True)
    return [line.split()[-1] for line in listing.splitlines()]


def owners(symbols):
    """The name before the first "::" or "(": Storage for _ZN7Storage5clearEv, stime for stime."""
    text = subprocess.check_output(["c++filt"], input="\n".join(symbols), text=True)
    text = re.sub(r"^(typeinfo name|typeinfo|vtable|VTT) for ", "", text, flags=re.MULTILINE)
    return [re.match(r"\w+", line)[0] for line in text.splitlines()]


def foreign_symbols(symbols, names):
    own = [name for name in symbols if not LIBRARY_VERSION.search(name)]
    for symbol, owner in zip(own, owners(own)):
        if owner not in names and symbol not in START_FILES:
            yield symbol


def foreign_libraries(readelf, plugin):
    dynamic = subprocess.check_output([readelf, "-d", plugin], text=True)
    for library in re.findall(r"\(NEEDED\).*\[(.*)\]", dynamic):
        if not LIBRARIES.match(library):
            yield library


def main(nm, readelf, plugin, folder):
    symbols, names = undefined_symbols(nm, plugin), platform_names(folder)
    wrong = [f"symbol {name}" for name in foreign_symbols(symbols, names)]
    wrong += [f"library {name}" for name in foreign_libraries(readelf, plugin)]
    for line in wrong:
        print(f"imported, but not declared in platform/: {line}")
    if names.isdisjoint(owners(symbols)):
        print("no name of platform/ is imported: the list of names must be wrong")
        return 1
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
