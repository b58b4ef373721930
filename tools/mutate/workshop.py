"""The folder of one job, which tries mutants in its own copy of the sources and programs."""

import os
import pathlib
import shutil
import subprocess
from dataclasses import dataclass, field

from programs import BODIES
from running import PASSED, outcome_of

NO_BUILD = "did not compile"


class NoLink(Exception):
    """A program cannot be linked. No mutant causes that, because a mutant that compiles defines the same
    symbols. So the tool or the build is broken."""


@dataclass
class Changed:
    """The objects that a mutant changes, and the ones and the executables built so far."""

    objects: list
    compiled: dict = field(default_factory=dict)  # the path of each object
    linked: set = field(default_factory=set)  # executables


class Workshop:
    def __init__(self, build, folder, programs):
        self._build = build
        self.folder = folder
        self._programs = programs
        shutil.rmtree(folder, ignore_errors=True)
        for body in BODIES:
            shutil.copytree(build.tree / body, folder / body)
        for name in ("objects", "temporary", "bin/tests"):
            (folder / name).mkdir(parents=True)
        # A test looks for its plug-ins next to itself, and for CMakeCache.txt to know that it is in a build.
        for pattern in ("CMakeCache.txt", "bin/*", "bin/tests/*"):
            for path in build.folder.glob(pattern):
                if path.is_file():
                    self._take_as_built(path.relative_to(build.folder))

    def verdict(self, mutant):
        """A mutant's result: it does not compile, the first outcome that is not a pass, or a pass."""
        source = self.folder / mutant.path
        source.write_text(mutant.applied())
        changed = Changed(self._build.objects_of(mutant.path))
        try:
            return self._outcome(mutant.path, changed)
        except subprocess.CalledProcessError:
            return NO_BUILD
        except NoLink as error:
            raise NoLink(f"{mutant.path}:{mutant.line}: {error}") from None
        finally:
            source.write_text(mutant.text)
            for name in changed.linked:
                self._take_as_built(name)

    def _take_as_built(self, name):
        (self.folder / name).unlink(missing_ok=True)
        os.link(self._build.folder / name, self.folder / name)

    def _outcome(self, path, changed):
        for program in self._judges(path):
            touched = [name for name in program.executables if self._link(name, changed)]
            if touched:
                outcome = outcome_of(program, self.folder)
                if outcome != PASSED:
                    return outcome
        return PASSED

    def _judges(self, path):
        """The programs for a source, first those that are named after its folder."""
        body, folder = path.split("/")[:2]
        judges = [program for program in self._programs if body in program.bodies]
        return sorted(judges, key=lambda program: f"{body}_{folder}" not in program.name)

    def _link(self, name, changed):
        """Links an executable again; false if none of its objects has changed."""
        link = self._build.links[name]
        objects = [word for word in link if word in changed.objects]
        if objects and name not in changed.linked:
            for word in objects:
                if word not in changed.compiled:
                    file = f"{len(changed.compiled)}.o"
                    changed.compiled[word] = self._compiled(word, file)
            changed.linked.add(name)
            self._run_linker(name, [changed.compiled.get(word, word) for word in link])
        return bool(objects)

    def _compiled(self, name, file):
        target = str(self.folder / "objects" / file)
        self._run(self._compilation(name, target))
        return target

    def _run_linker(self, name, words):
        words[words.index("-o") + 1] = str(self.folder / name)
        (self.folder / name).unlink()
        try:
            self._run(words)
        except subprocess.CalledProcessError as error:
            raise NoLink(f"{name} cannot be linked") from error

    def _run(self, words):
        subprocess.run(words, cwd=self._build.folder, stderr=subprocess.DEVNULL, check=True)

    def _compilation(self, name, target):
        """The compilation of an object with this job's sources instead of the tree's, without warnings."""
        words = [self._moved(word) for word in self._build.compilation(name)]
        words[words.index("-o") + 1] = target
        source = words.index("-c") + 1
        if words[source].startswith(f"{self._build.folder}/"):
            words[source] = self._joined(words[source], target)
        return [*words, "-w"]

    def _joined(self, source, target):
        """A copy of a generated source that includes several: it includes this job's sources."""
        text = pathlib.Path(source).read_text()
        for body in BODIES:
            text = text.replace(f'"{self._build.tree}/{body}/', f'"{self.folder}/{body}/')
        own = pathlib.Path(f"{target}.cxx")
        own.write_text(text)
        return str(own)

    def _moved(self, word):
        tree = f"{self._build.tree}/"
        for body in BODIES:
            place = word.find(tree + body)
            if place >= 0 and word[place + len(tree + body) :][:1] in ("", "/"):
                return word.replace(tree, f"{self.folder}/")
        if word.startswith("-fmacro-prefix-map="):
            return f"-fmacro-prefix-map={self.folder}/="
        return word
