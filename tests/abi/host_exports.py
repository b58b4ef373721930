"""Checks that the host exports what it defines of platform/ and the C library's calls that it
replaces, and nothing else: host_exports.py NM HOST PLATFORM_FOLDER
"""

import subprocess
import sys

from imports import foreign_symbols, owners, platform_names

REPLACED = {"fopen", "fopen64", "open", "open64", "settimeofday", "stat", "stat64", "sysinfo", "time"}
OTHER_OWNERS = ("host::", "nlohmann::", "CLI::", "msgpack::")
GLOBAL = "TDBRVWu"  # nm's letters


def defined(nm, host, *options):
    lines = subprocess.check_output([nm, "--defined-only", *options, host], text=True).splitlines()
    return sorted(words[2] for words in map(str.split, lines) if len(words) == 3 and words[1] in GLOBAL)


def is_of_another(symbol):
    name = subprocess.check_output(["c++filt", symbol], text=True)
    return any(other in name for other in OTHER_OWNERS)


def is_of_the_library(symbol):
    """The linker also exports the C++ library's templates that the library itself refers to."""
    return owners([symbol]) == ["std"] and not is_of_another(symbol)


def main(nm, host, folder):
    names, exported, known = platform_names(folder), defined(nm, host, "-D"), defined(nm, host)
    own = {symbol for symbol, owner in zip(known, owners(known)) if owner in names}
    hidden = sorted(own.difference(exported))
    wrong = [f"must be exported: {symbol}" for symbol in hidden if not is_of_another(symbol)]
    foreign = [symbol for symbol in foreign_symbols(exported, names) if symbol not in REPLACED]
    wrong += [f"must not be exported: {symbol}" for symbol in foreign if not is_of_the_library(symbol)]
    print("\n".join(wrong))
    return 1 if wrong or not own else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
