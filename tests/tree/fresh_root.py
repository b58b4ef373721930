"""Tests which settings ./dev fresh passes from the machine to its bare root: fresh_root.py TREE"""

import os
import pathlib
import platform
import shutil
import subprocess
import sys
import tempfile

# Minimal stand-ins for the programs that make the root.
PROGRAMS = {
    "apt-get": '[ "$1" != indextargets ] || cat "$0.sources"',
    "chown": "",
    "debootstrap": 'mkdir -p "$3/etc/apt" "$3/srv"; echo "$*" >"$0.words"',
    "dpkg-query": 'printf "installed %s\\n" "$@"',
    "git": 'mkdir -p "$4/build" && echo "{}" >"$4/build/bench.json"',
    "sudo": '"$@"',
    "unshare": 'printf "%s\\n" "$@" >"$0.words"',
}
PROXIES = ("http_proxy", "https_proxy", "no_proxy", "HTTP_PROXY", "HTTPS_PROXY", "NO_PROXY")


def run_fresh(tree, folder, sources):
    """Runs a copy of the verb; returns the arguments of debootstrap and of unshare."""
    shutil.copytree(tree / "tools", folder / "tree/tools")
    programs = folder / "bin"
    programs.mkdir()
    for name, text in PROGRAMS.items():
        program = programs / name
        program.write_text(f"#!/bin/sh\n{text}\n")
        program.chmod(0o755)
    (programs / "apt-get.sources").write_text(sources)
    environment = {"PATH": f"{programs}:{os.environ['PATH']}", "CLOCK_TREE": str(folder / "tree")}
    environment.update({name: f"of {name}" for name in PROXIES})
    subprocess.run(["bash", folder / "tree/tools/dev/fresh.sh"], env=environment, check=True,
                   stdin=subprocess.DEVNULL, capture_output=True, text=True)
    return [(programs / f"{name}.words").read_text() for name in ("debootstrap", "unshare")]


def main(tree):
    codename = platform.freedesktop_os_release().get("VERSION_CODENAME", "none")
    sources = ("Debian|other http://other.example/ stable main\n"
               f"Debian|{codename} http://mirror.example/debian/ stable main\n")
    with tempfile.TemporaryDirectory() as folder:
        try:
            debootstrap, unshare = run_fresh(tree, pathlib.Path(folder), sources)
        except subprocess.CalledProcessError as error:
            sys.exit(f"./dev fresh fails with sources that name the release by its suite: {error.stderr}")
        if not pathlib.Path(folder, "tree/build/bench.json").exists():
            sys.exit("the figures of the benchmark are not kept")
    _, release, _, mirror = debootstrap.split()
    if (release, mirror) != (codename, "http://mirror.example/debian/"):
        sys.exit(f"wrong release or mirror: debootstrap {debootstrap}")
    missing = [name for name in PROXIES if f"{name}=of {name}\n" not in unshare]
    if missing:
        sys.exit(f"not passed to the root: {', '.join(missing)}")


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]))
