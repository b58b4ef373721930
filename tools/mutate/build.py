"""The build of the unmutated tree: how each object is compiled and each program linked."""

import json
import os
import re
import shlex
import subprocess

OBJECT = re.compile(r"^(\S+): #deps", re.MULTILINE)
# "ar qc src/libparts.a a.o b.o && ranlib ..."
LIBRARY = re.compile(r"ar\S* qc (\S+) ([^&]+)")


class Build:
    def __init__(self, tree, folder, executables):
        """executables: paths relative to the folder."""
        self.tree = tree
        self.folder = folder
        self.links = {path: self._link_of(path) for path in executables}
        self.linked = {word for words in self.links.values() for word in words}
        self._compilations = self._read_compilations()
        self._sources = self._read_sources()

    def objects_of(self, path):
        """The objects of the executables that are compiled again when this file changes."""
        readers = self._sources.get(str(self.tree / path), set())
        return [name for name in self._compilations if name in readers & self.linked]

    def compilation(self, name):
        return self._compilations[name]

    def _ninja(self, *words):
        command = ["ninja", "-C", str(self.folder), "-t", *words]
        return subprocess.run(command, check=True, capture_output=True, text=True).stdout

    def _link_of(self, path):
        return link_words(self._ninja("commands", path))

    def _read_compilations(self):
        entries = json.loads((self.folder / "compile_commands.json").read_text())
        commands = [shlex.split(entry["command"]) for entry in entries]
        return {words[words.index("-o") + 1]: words for words in commands}

    def _read_sources(self):
        """The objects that read each source or header, by its path."""
        readers = {}
        text = self._ninja("deps")
        for part in text.split("\n\n"):
            match = OBJECT.match(part)
            for line in part.splitlines()[1:] if match else ():
                path = os.path.normpath(self.folder / line.strip())
                readers.setdefault(path, set()).add(match.group(1))
        return readers


def link_words(commands):
    """The words of the last command, a link ": && c++ ... && :". A static library is replaced by its
    objects, because a mutant changes objects."""
    objects = {name: words.split() for name, words in LIBRARY.findall(commands)}
    words = []
    for word in shlex.split(commands.strip().splitlines()[-1])[2:-2]:
        members = objects.get(word)
        words += ["-Wl,--start-lib", *members, "-Wl,--end-lib"] if members else [word]
    return words
