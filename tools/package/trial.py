"""Uses what ./dev package makes as its users do, from the tarball and installed, and purges it: trial.py FOLDER

It runs in a root that is thrown away, in which the tree is at /mnt.
"""

import os
import pathlib
import shutil
import subprocess
import sys

sys.path.insert(0, "/mnt/tests/sdk")
import consumers  # noqa: E402

NOBODY = 65534
HOME = pathlib.Path("/tmp/home")
RUNTIME = pathlib.Path("/tmp/runtime")
USER = {"PATH": "/usr/bin:/bin", "LANG": "C.UTF-8", "HOME": str(HOME), "XDG_RUNTIME_DIR": str(RUNTIME)}
PROGRAMS = ["clockhost", "clockctl", "clockpanel"]
PAGES = [("1", name) for name in PROGRAMS] + [("5", "clock-scenario"), ("7", "clock-protocol")]
UNIT = "/usr/lib/systemd/user/clockhost.service"

# What each shell offers after "clockctl sta", in a session in which the user has configured nothing
SHELLS = {
    "bash": ". /usr/share/bash-completion/completions/clockctl; COMP_WORDS=(clockctl sta); COMP_CWORD=1;"
            " _clockctl; echo ${COMPREPLY[*]}",
    "fish": "complete -C 'clockctl sta' | string split -f 1 \\t",
    "zsh": "autoload -Uz compinit; compinit -D; [ $_comps[clockctl] = _clockctl ] && echo status",
}

# With the telephone of one's own that the package gives
CLIENT = """
import deskclock
with deskclock.Phone.spawn() as phone:
    phone.advance("1h")
    print(phone.get_time())
"""


def run(*words, **options):
    print("$", *words, flush=True)
    ended = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)
    print(ended.stdout, end="", flush=True)
    if ended.returncode != 0:
        sys.exit(f"{words} ends with {ended.returncode}")
    return ended.stdout


def as_user(*words):
    return run(*words, user=NOBODY, group=NOBODY, extra_groups=[], env=USER, cwd="/")


def expect(wanted, got):
    if wanted not in got:
        sys.exit(f"{wanted!r} should be in {got!r}")


def use_the_host(programs):
    """With the default folders of a user, who has none of the host's yet."""
    ctl = f"{programs}/clockctl"
    for folder in (HOME, RUNTIME):
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(mode=0o700)
        os.chown(folder, NOBODY, NOBODY)
    ready, written = os.pipe()
    host = subprocess.Popen([f"{programs}/clockhost", "--speed", "0", "--network", "up", "--ready-fd", str(written)],
                            user=NOBODY, group=NOBODY, extra_groups=[], env=USER, cwd="/", pass_fds=[written])
    os.close(written)
    if os.read(ready, 1) != b"\n":
        sys.exit("clockhost does not start")
    expect("getTimeStringReturn=00:00", as_user(ctl, "call", "getTime"))
    expect("paused", as_user(ctl, "clock"))
    as_user(ctl, "set", "sntp-addr", "127.0.0.1")
    as_user(ctl, "clock", "advance", "1h")
    expect('"process":', as_user(ctl, "--json", "status"))  # of the NTP client
    for place in (HOME / ".local/state/clockhost/settings.db", RUNTIME / "clockhost.sock"):
        if not place.exists():
            sys.exit(f"{place} should exist")
    host.terminate()
    if host.wait() != 0:
        sys.exit(f"clockhost ends with {host.returncode}")


def use_the_documents():
    for section, page in PAGES:
        expect(f"man{section}/{page}.{section}", run("man", "-w", section, page))
    for shell, words in SHELLS.items():
        expect("status", as_user(shell, "-c", words))
    command = next(line for line in open(UNIT) if line.startswith("ExecStart="))
    expect("ExecStart=/usr/bin/clockhost ", command)


def use_the_development_files():
    user = consumers.Consumers(pathlib.Path("/tmp/consumers"), pathlib.Path("/mnt"), "cmake", "ninja", "c++", "none")
    user.folder.mkdir()
    user.found, user.found_in_other, user.flags_found = [], [], {}
    user.plugin = run("pkg-config", "--variable=plugin", "ClockService").strip()
    user.use_the_package()
    user.link()
    user.use_pkg_config()
    if user.faults:
        sys.exit("\n".join(user.faults))


def main(folder):
    tarball = next(pathlib.Path(folder).glob("*.tar.xz"))
    run("tar", "-x", "-C", "/tmp", "-f", str(tarball))
    use_the_host(f"/tmp/{tarball.name.removesuffix('.tar.xz')}/bin")
    packages = {path.name.split("_")[0]: str(path) for path in pathlib.Path(folder).glob("*.deb")}
    run("dpkg", "-i", *packages.values())
    for program in PROGRAMS:
        run(program, "--version")
    use_the_host("/usr/bin")
    expect("01:00", as_user("python3", "-c", CLIENT))
    use_the_documents()
    use_the_development_files()
    run("dpkg", "--purge", *packages)


if __name__ == "__main__":
    main(*sys.argv[1:])
