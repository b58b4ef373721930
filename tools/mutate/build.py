"""The build of the unmutated tree: how each object is compiled and each program linked."""

import json
import os
import re
import shlex
import subprocess

OBJECT = re.compile(r"^(\S+): #deps", re.MULTILINE)


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
        """The words of the link command, from ": && c++ ... && :"."""
        line = self._ninja("commands", path).strip().splitlines()[-1]
        return shlex.split(line)[2:-2]

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
