"""One job's place to try mutants in: its own copy of the plug-in's sources."""

import os
import select
import shutil
import signal
import subprocess
from dataclasses import dataclass

BODIES = ("include", "src")
NO_BUILD = "does not compile"
SURVIVED = "survived"


@dataclass
class Program:
    """A test program, and what it takes on the unmutated tree."""

    name: str
    seconds: float = 0.0

    @property
    def limit(self):
        return 10 + 10 * self.seconds


class Workshop:
    def __init__(self, build, folder, programs):
        self._build = build
        self._folder = folder
        self._programs = programs
        shutil.rmtree(folder, ignore_errors=True)
        for body in BODIES:
            shutil.copytree(build.tree / body, folder / body)
        (folder / "objects").mkdir()

    def verdict(self, mutant):
        """What becomes of a mutant: the test program that finds it, or one of the texts above."""
        source = self._folder / mutant.path
        source.write_text(mutant.applied())
        try:
            return self._finder(mutant.path)
        except subprocess.CalledProcessError:
            return NO_BUILD
        finally:
            source.write_text(mutant.text)

    def _finder(self, path):
        changed = self._build.objects_of(path)
        compiled = {}
        for program in self._programs:
            link = self._build.links[program.name]
            for name in changed:
                if name in link and name not in compiled:
                    compiled[name] = self._compiled(name, f"{len(compiled)}.o")
            if not compiled.keys().isdisjoint(link) and not self._passes(program, link, compiled):
                return program.name
        return SURVIVED

    def _compiled(self, name, file):
        target = str(self._folder / "objects" / file)
        self._run(self._compilation(name, target))
        return target

    def _passes(self, program, link, compiled):
        words = [compiled.get(word, word) for word in link]
        words[words.index("-o") + 1] = str(self._folder / program.name)
        self._run(words)
        return passes(program, self._folder / program.name, self._folder / "temporary")

    def _run(self, words):
        subprocess.run(words, cwd=self._build.folder, stderr=subprocess.DEVNULL, check=True)

    def _compilation(self, name, target):
        """The compilation of an object with this job's sources in the place of the tree's."""
        words = [self._moved(word) for word in self._build.compilation(name)]
        words[words.index("-o") + 1] = target
        return words

    def _moved(self, word):
        tree = f"{self._build.tree}/"
        for body in BODIES:
            place = word.find(tree + body)
            if place >= 0 and word[place + len(tree + body) :][:1] in ("", "/"):
                return word.replace(tree, f"{self._folder}/")
        if word.startswith("-fmacro-prefix-map="):
            return f"-fmacro-prefix-map={self._folder}/="
        return word


def passes(program, path, temporary):
    """Whether a test program passes in time; it and what it started are ended when it does not."""
    shutil.rmtree(temporary, ignore_errors=True)
    temporary.mkdir()
    running = subprocess.Popen(
        [str(path), "--gtest_brief=1", "--gtest_fail_fast"],
        cwd=temporary,
        env={**os.environ, "TMPDIR": str(temporary)},
        stdin=subprocess.DEVNULL,
        stdout=subprocess.DEVNULL,
        stderr=subprocess.DEVNULL,
        start_new_session=True,
    )
    try:
        return ends(running, program.limit) and result(running) == 0
    finally:
        end_group(running)


def ends(process, limit):
    handle = os.pidfd_open(process.pid)
    try:
        return bool(select.select([handle], [], [], limit)[0])
    finally:
        os.close(handle)


def result(process):
    """The exit status of an ended process, which stays unreaped, so that its group is still its own."""
    return os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOWAIT).si_status


def end_group(process):
    os.killpg(process.pid, signal.SIGKILL)
    process.wait()
