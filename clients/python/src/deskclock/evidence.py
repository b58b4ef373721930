"""What is kept of the phones of one test: their logs, and what was done to them as scenarios."""

from __future__ import annotations

import contextlib
import pathlib
import shutil
import tempfile
from typing import Callable, List, Optional, Tuple

from .errors import PhoneError
from .phone import Phone
from .recording import Recording

_MOST_LINES = 60  # of a log or scenario in the report; the files have all of them

Section = Tuple[str, str]  # of a report: title and text


class KeptPhone:
    """A phone that is recorded. A restart begins a further scenario; the log has all runs."""

    def __init__(self, phone: Phone, name: str, folder: pathlib.Path) -> None:
        self.phone, self.name = phone, name
        self._folder = folder
        self._scenarios: List[pathlib.Path] = []
        self._recording: Optional[Recording] = None
        phone._before_end, phone._after_restart = self.end, self.begin

    def begin(self) -> None:
        run = len(self._scenarios) + 1
        stem = self.name if run == 1 else f"{self.name}-run-{run}"
        file = self._folder / f"{stem}.scenario"
        self._scenarios.append(file)
        try:
            self._recording = self.phone.record(file)
        except PhoneError as error:
            _add_note(file, error)

    def end(self) -> None:
        recording, self._recording = self._recording, None
        if recording is not None:
            try:
                recording.stop()
            except PhoneError as error:  # the host has died; the scenario ends there
                _add_note(recording.file, error)

    def files(self) -> List[pathlib.Path]:
        self.end()
        log = self._folder / f"{self.name}.log"
        try:
            log.write_text(self.phone.log(), encoding="utf-8")
        except PhoneError as error:
            _add_note(log, error)
        return [log, *self._scenarios]


class Evidence:
    """The phones of one running test. Their files lie in a folder that `close` removes."""

    def __init__(self, make_folder: Callable[[], pathlib.Path]) -> None:
        """make_folder: where the files of a failed test are kept."""
        self._make_folder = make_folder
        self._folder = tempfile.TemporaryDirectory(prefix="deskclock-")
        self._phones: List[KeptPhone] = []
        self._shown = False

    def add(self, phone: Phone) -> KeptPhone:
        name = f"phone-{len(self._phones) + 1}"
        self._phones.append(KeptPhone(phone, name, pathlib.Path(self._folder.name)))
        return self._phones[-1]

    def sections(self) -> List[Section]:
        """Ends the recordings, and keeps the files: the sections of the report, the first time."""
        if self._shown or not self._phones:
            return []
        self._shown = True
        files = [file for phone in self._phones for file in phone.files()]
        sections: List[Section] = []
        folder: Optional[pathlib.Path] = None
        try:
            folder = self._make_folder()
            for file in files:
                shutil.copyfile(file, folder / file.name)
        except OSError as error:
            sections, folder = [("phones", f"the files below cannot be kept: {error}")], None
        return sections + [_section(file, folder) for file in files]

    def faults(self) -> List[str]:
        """Of closed phones: which host has not ended as it should, and the end of its log."""
        faults = ((each.name, each.phone.fault()) for each in self._phones)
        return [f"{name}: {fault}" for name, fault in faults if fault]

    def close(self) -> None:
        with contextlib.suppress(OSError):
            self._folder.cleanup()


def _add_note(file: pathlib.Path, error: PhoneError) -> None:
    with open(file, "a", encoding="utf-8") as text:
        text.write("".join(f"# {line}\n" for line in str(error).splitlines()))


def _section(file: pathlib.Path, folder: Optional[pathlib.Path]) -> Section:
    kind = file.suffix[1:]
    title = f"{file.stem} {kind}"
    if folder is not None:
        start = "clockhost --scenario " if kind == "scenario" else ""
        title += f": {start}{folder / file.name}"
    lines = file.read_text(encoding="utf-8", errors="replace").splitlines()
    return title, "\n".join(lines[-_MOST_LINES:])
