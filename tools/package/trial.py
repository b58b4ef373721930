"""Uses what ./dev package makes as its users do, and purges it: trial.py alone|installed ROOT [NAME=VALUE...]

ROOT is a bare root that is thrown away. The packages are in its /tmp/tester/build/package, the tree is at its /mnt.
NAME=VALUE: the environment of what runs there.

alone: each package is installed with nothing but what apt finds that it needs, and used.
installed: with the users' tools, all of them are used. Then they are purged, which must leave nothing, and
the how-to is followed.
"""

import os
import pathlib
import subprocess
import sys

NOBODY = 65534
HOME = "/tmp/tester"
RUNTIME = "/tmp/runtime"
PATH = "/usr/sbin:/usr/bin:/sbin:/bin"
OURS = ["libclockservice1", "libclockservice-dev", "clockhost", "python3-deskclock"]
# What the how-to names, what reads the documents, and what checks the units
TOOLS = ["bash-completion", "cmake", "fish", "g++", "libexpat1", "libgtest-dev", "libseccomp2", "libsqlite3-0", "make",
         "man-db", "pkgconf", "python3", "systemd", "xz-utils", "zsh"]
PROGRAMS = ["clockhost", "clockctl", "clockpanel"]
PAGES = [("1", name) for name in PROGRAMS] + [("5", "clock-scenario"), ("7", "clock-protocol")]
UNITS = {"user": "/usr/lib/systemd/user/clockhost.service", "system": "/usr/lib/systemd/system/clockhost.service"}

# What each shell offers after "clockctl sta", in a session in which the user has configured nothing
SHELLS = {
    "bash": ". /usr/share/bash-completion/completions/clockctl; COMP_WORDS=(clockctl sta); COMP_CWORD=1;"
            " _clockctl; echo ${COMPREPLY[*]}",
    "fish": "complete -C 'clockctl sta' | string split -f 1 \\t",
    "zsh": "autoload -Uz compinit; compinit -D; [ $_comps[clockctl] = _clockctl ] && echo status",
}

# With the telephone of one's own that the package gives
# It runs the clockhost beside it.
PANEL = """
import sys
sys.path.insert(0, "/mnt/tests/panel")
from panels import Panel
panel = Panel("/usr/bin/clockpanel", "--socket", "none")
print(panel.ask("POST", "/replay", '{"scenario": "clock advance 1s"}').text)
panel.end()
"""

CLIENT = """
import deskclock
with deskclock.Phone.spawn() as phone:
    phone.advance("1h")
    print(phone.get_time())
"""

# In the root: a program that links the plug-in, and one with the flags of pkg-config, from the installed examples.
# CMake refuses a package that lacks a file of the tests for a framework.
DEVELOPMENT = """
import pathlib, sys
sys.path.insert(0, "/mnt/tests/sdk")
import consumers
user = consumers.Consumers(pathlib.Path("/tmp/consumers"), pathlib.Path("/none"), "cmake", "make", "c++", "none")
user.folder.mkdir()
user.examples = pathlib.Path("/usr/share/doc/libclockservice-dev/examples")
user.found_in_other, user.flags_found = [], {}
user.link()
user.use_pkg_config()
consumers.run("cmake", "-S", user.examples / "check", "-B", "/tmp/consumers/check")
sys.exit("\\n".join(user.faults) or 0)
"""


def expect(wanted, got):
    if wanted not in got:
        sys.exit(f"{wanted!r} should be in {got!r}")


class Trial:
    def __init__(self, root, words):
        self.root = pathlib.Path(root)
        self.environment = {"PATH": PATH, "LANG": "C.UTF-8", "HOME": HOME, "XDG_RUNTIME_DIR": RUNTIME,
                            **dict(word.split("=", 1) for word in words)}

    def command(self, *words, user=0):
        return ["chroot", f"--userspec={user}:{user}", "--groups=", str(self.root), *words]

    def run(self, *words, user=0, **more):
        print("$", *words, flush=True)
        ended = subprocess.run(self.command(*words, user=user), stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               text=True, stdin=subprocess.DEVNULL, env={**self.environment, **more})
        print(ended.stdout, end="", flush=True)
        if ended.returncode != 0:
            sys.exit(f"{words} ends with {ended.returncode}")
        return ended.stdout

    def as_user(self, *words):
        return self.run(*words, user=NOBODY)

    def apt(self, *words):
        self.run("apt-get", "-q", "-y", "--no-install-recommends", "-o", "Dpkg::Options::=--force-unsafe-io",
                 *words, DEBIAN_FRONTEND="noninteractive")

    def install(self, *names):
        folder = f"{HOME}/build/package"
        self.apt("install", *(f"{folder}/{path.name}" for path in (self.root / folder[1:]).glob("*.deb")
                              if path.name.split("_")[0] in names))

    def new_folders(self, *paths):
        for path in paths:
            folder = self.root / path[1:]
            self.run("rm", "-rf", path)
            folder.mkdir(mode=0o700, parents=True)
            os.chown(folder, NOBODY, NOBODY)

    def use_a_host(self, ctl, files, *words):
        """With a virtual clock that is paused; words start the host, which then has these files."""
        ready, written = os.pipe()
        command = self.command(*words, "--speed", "0", "--network", "up", "--ready-fd", str(written), user=NOBODY)
        print("$", *command, flush=True)
        host = subprocess.Popen(command, env=self.environment, pass_fds=[written])
        os.close(written)
        if os.read(ready, 1) != b"\n":
            sys.exit("clockhost does not start")
        expect("getTimeStringReturn=00:00", self.as_user(*ctl, "call", "getTime"))
        expect("paused", self.as_user(*ctl, "clock"))
        self.as_user(*ctl, "set", "sntp-addr", "127.0.0.1")
        self.as_user(*ctl, "clock", "advance", "1h")
        expect('"process":', self.as_user(*ctl, "--json", "status"))  # of the NTP client
        for path in files:
            if not (self.root / path[1:]).exists():
                sys.exit(f"{path} should exist")
        host.terminate()
        if host.wait() != 0:
            sys.exit(f"clockhost ends with {host.returncode}")

    def use_the_host(self):
        """With the default folders of a user, who has none of the host's yet."""
        self.new_folders(RUNTIME, f"{HOME}/user")
        self.environment["HOME"] = f"{HOME}/user"
        files = [f"{HOME}/user/.local/state/clockhost/settings.db", f"{RUNTIME}/clockhost.sock"]
        self.use_a_host(["clockctl"], files, "clockhost")
        self.environment["HOME"] = HOME

    def use_the_unit(self, manager, folders, socket):
        """As systemd reads it, and its command with the folders that systemd would give it."""
        self.new_folders(*folders.values())
        said = self.run("systemd-analyze", "verify", "--recursive-errors=one", f"--{manager}", UNITS[manager])
        if "clockhost" in said:
            sys.exit(f"{UNITS[manager]}: {said}")
        if list((self.root / "etc/systemd").rglob("clockhost*")):
            sys.exit("a unit is enabled")
        text = (self.root / UNITS[manager][1:]).read_text()
        command = next(line for line in text.splitlines() if line.startswith("ExecStart="))
        for specifier, folder in folders.items():
            command = command.replace(specifier, folder)
        if "--clock" in command:
            sys.exit(f"a unit must not set the machine's clock: {command}")
        self.use_a_host(["clockctl", "--socket", socket], [f"{folders['%S/clockhost']}/settings.db", socket],
                        *command.removeprefix("ExecStart=").split())

    def use_the_documents(self):
        for section, page in PAGES:
            expect(f"man{section}/{page}.{section}", self.run("man", "-w", section, page))
        for shell, words in SHELLS.items():
            expect("status", self.as_user(shell, "-c", words))

    def paths(self):
        """dpkg and the tools that it calls may keep notes."""
        listed = self.run_quietly("find", "/", "-xdev", "(", "-path", "/var/lib/dpkg", "-o", "-path", "/var/log", "-o",
                                  "-path", "/var/cache", ")", "-prune", "-o", "-print")
        return set(listed.splitlines())

    def run_quietly(self, *words):
        return subprocess.run(self.command(*words), stdout=subprocess.PIPE, text=True, check=True).stdout

    def follow_the_how_to(self):
        """As root, for whom sudo has nothing to do; apt asks nothing."""
        sudo = self.root / "usr/local/bin/sudo"
        sudo.write_text('#!/bin/sh\nexec "$@"\n')
        sudo.chmod(0o755)
        (self.root / "etc/apt/apt.conf.d/trial").write_text('APT::Get::Assume-Yes "true";\n')
        self.environment["PATH"] = f"/usr/local/bin:{PATH}"
        self.new_folders(RUNTIME)
        tree = pathlib.Path(__file__).parents[2]
        ended = subprocess.run(["python3", "-B", tree / "tools/dev/readme.py", tree / "docs/how-to/install-packages.md",
                                *self.command("env", "-C", HOME)], env=self.environment)
        if ended.returncode != 0:
            sys.exit("the how-to is wrong")


def try_alone(trial):
    trial.apt("update")
    trial.install("libclockservice1", "clockhost")
    for program in PROGRAMS:
        trial.run(program, "--version")
    trial.use_the_host()
    trial.install("python3-deskclock")
    expect("01:00", trial.as_user("python3", "-c", CLIENT))
    expect('"passed":true', trial.as_user("python3", "-B", "-c", PANEL))


def try_installed(trial):
    trial.apt("update")
    trial.apt("install", *TOOLS)
    before = trial.paths()
    trial.install(*OURS)
    trial.use_the_unit("user", {"%S/clockhost": f"{HOME}/state", "%t": RUNTIME}, f"{RUNTIME}/clockhost.sock")
    trial.use_the_unit("system", {"%S/clockhost": "/var/lib/clockhost", "%t/clockhost": "/run/clockhost"},
                       "/run/clockhost/clock.sock")
    trial.use_the_documents()
    trial.run("python3", "-c", DEVELOPMENT)
    trial.apt("purge", *OURS)
    left = trial.paths() - before
    if left:
        sys.exit("left after the purge: " + "\n".join(sorted(left)))
    print("nothing is left after the purge")
    trial.follow_the_how_to()


def main(part, root, *words):
    (try_alone if part == "alone" else try_installed)(Trial(root, words))


if __name__ == "__main__":
    main(*sys.argv[1:])
