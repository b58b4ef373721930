"""One job's place to try mutants in: its own copy of the plug-in's sources."""

import shutil
import subprocess

from running import PASSED, outcome_of

BODIES = ("include", "src")
NO_BUILD = "did not compile"


class NoLink(Exception):
    """No mutant does that: what compiles has the names that it had. So something here is broken."""


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
        """What becomes of a mutant: it does not compile, or the first end of a test program that is
        not to pass."""
        source = self._folder / mutant.path
        source.write_text(mutant.applied())
        try:
            return self._outcome(mutant.path)
        except subprocess.CalledProcessError:
            return NO_BUILD
        except NoLink as error:
            raise NoLink(f"{mutant.path}:{mutant.line}: {error}") from None
        finally:
            source.write_text(mutant.text)

    def _outcome(self, path):
        changed = self._build.objects_of(path)
        compiled = {}
        for program in self._programs:
            link = self._build.links[program.name]
            for name in changed:
                if name in link and name not in compiled:
                    compiled[name] = self._compiled(name, f"{len(compiled)}.o")
            if not compiled.keys().isdisjoint(link):
                outcome = self._run_with(program, link, compiled)
                if outcome != PASSED:
                    return outcome
        return PASSED

    def _compiled(self, name, file):
        target = str(self._folder / "objects" / file)
        self._run(self._compilation(name, target))
        return target

    def _run_with(self, program, link, compiled):
        words = [compiled.get(word, word) for word in link]
        words[words.index("-o") + 1] = str(self._folder / program.name)
        try:
            self._run(words)
        except subprocess.CalledProcessError as error:
            raise NoLink(f"{program.name} cannot be linked") from error
        return outcome_of(program, self._folder / program.name, self._folder / "temporary")

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
