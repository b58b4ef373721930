"""Records what is done to a telephone, and its events, as a scenario."""

from __future__ import annotations

import os
import pathlib
import shutil
import signal
import subprocess
from typing import Optional

from .errors import HostGone, NoReply, PhoneError
from .host_process import is_readable, start_process, stop_process


class Recording:
    """`clockctl record`, the program beside clockhost. It also ends when the host does; the file then
    holds what was done before."""

    def __init__(self, program: str, calls: str, control: str, file: pathlib.Path, timeout: float):
        """program: clockctl. calls, control: paths of the sockets. timeout: seconds until the recording
        has begun."""
        self.file = file
        self._fault: Optional[str] = None  # after `stop`: empty if the recording is complete
        sockets = ["--socket", calls, "--control-socket", control]
        words = [program, *sockets, "record", str(file)]
        self._process = start_process(words, subprocess.DEVNULL, subprocess.PIPE)
        self._wait_until_ready(timeout)

    def stop(self) -> str:
        """Ends the recording: the text of the scenario. Raises PhoneError if it is not complete."""
        if self._fault is None:
            self._fault = self._stop()
        if self._fault:
            raise PhoneError(f"the recording is not complete: {self._fault}")
        return self.file.read_text(encoding="utf-8")

    def close(self) -> None:
        """Ends the recording if `stop` has not; the file may lack the latest steps."""
        if self._fault is None:
            self._fault = "it was closed"
        if self._process.poll() is None:
            self._process.kill()
            self._process.wait()
        assert self._process.stderr is not None
        self._process.stderr.close()

    def _stop(self) -> str:
        stop_process(self._process, signal.SIGINT)
        assert self._process.stderr is not None
        with self._process.stderr as messages:
            said = messages.read().decode(errors="replace").strip()
        return (said or "no reason given") if self._process.returncode != 0 else ""

    def _wait_until_ready(self, timeout: float) -> None:
        messages = self._process.stderr
        assert messages is not None
        if not is_readable(messages, timeout):
            self.close()
            raise NoReply(f"the recording did not begin within {timeout:g} s")
        first = messages.readline().decode(errors="replace").strip()
        if first != "ready":
            self.close()
            raise PhoneError(f"the recording did not begin: {first}")


def clockctl_path(clockhost: Optional[str]) -> str:
    """$CLOCKCTL, else clockctl beside this clockhost or $CLOCKHOST, else the one in $PATH."""
    name = os.environ.get("CLOCKCTL")
    host = clockhost or shutil.which(os.environ.get("CLOCKHOST") or "clockhost")
    if not name and host:
        name = shutil.which(os.path.join(os.path.dirname(os.path.realpath(host)), "clockctl"))
    path = shutil.which(name or "clockctl")
    if path is None:
        raise HostGone(f'no program "{name or "clockctl"}"; install it, or name it with $CLOCKCTL')
    return path
