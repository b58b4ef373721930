"""A host of one's own: a clockhost process, with a folder that nothing else uses."""

from __future__ import annotations

import contextlib
import os
import pathlib
import select
import shutil
import signal
import subprocess
import tempfile
import weakref
from typing import IO, List, Optional, Sequence, Union

from . import reaper
from .errors import HostGone, NoReply

Stream = Union[int, IO[bytes]]

_LONGEST_STOP = 30.0  # seconds: then it is killed, and counts as one that failed
_LONGEST_PARENT = 70  # bytes: what the folder's own name and its socket leave of 107
_MOST_LOG = 2000  # characters of the log in an error


class HostProcess:
    """State, device root, sockets and log lie in `folder`. `close`, the end of Python, or the cyclic
    collector once this object is lost ends the process and removes the folder; after a signal that
    kills Python the reaper does. A fork of Python leaves it alone."""

    def __init__(self, options: Sequence[str], program: Optional[str] = None) -> None:
        """options: those of clockhost. program: a path, else $CLOCKHOST, else clockhost in $PATH."""
        self.program = program_path(program)
        # Its path is short, because that of a socket may have only 107 bytes.
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="deskclock-", dir=_parent_folder()))
        self.calls = str(self.folder / "sock")
        self.control = str(self.folder / "sock.control")
        self._options = list(options)
        self._processes: List[subprocess.Popen[bytes]] = []
        self._power_cuts: List[subprocess.Popen[bytes]] = []
        self._last_log: Optional[str] = None  # after `close`
        self._pid = os.getpid()
        self._end = weakref.finalize(self, _end, self._pid, self._processes, self.folder)
        self._start()

    def wait_until_ready(self, timeout: float) -> None:
        """timeout: seconds. Raises HostGone if the host ends instead."""
        with self._ready as ready:
            if not is_readable(ready, timeout):
                raise NoReply(f"the host did not start within {timeout:g} s{self._log_end()}")
            if ready.read(1) != b"\n":
                raise HostGone(f"the host did not start{self.end_text()}")

    def stop(self, power_cut: bool = False) -> None:
        """Ends the process; its state remains."""
        process = self._processes[-1]
        if power_cut and process.poll() is None:
            self._power_cuts.append(process)
        stop_process(process, signal.SIGKILL if power_cut else signal.SIGTERM)

    def start_again(self) -> None:
        """After `stop`: with the saved state, and so with the saved time."""
        if "--at" in self._options:
            at = self._options.index("--at")
            del self._options[at : at + 2]
        self._start()

    @property
    def closed(self) -> bool:
        return not self._end.alive

    def close(self) -> None:
        """Ends the process, and removes the folder; the log can still be read."""
        if self.closed or os.getpid() != self._pid:
            return
        _stop_all(self._processes)
        with contextlib.suppress(HostGone):
            self._last_log = self.log()
        self._end()

    def fault(self) -> str:
        """After `close`: how a run failed, and the end of the log, or nothing. A power cut is no failure."""
        for process in self._processes:
            if process.returncode != 0 and process not in self._power_cuts:
                return f"the host ended with {_how(process)}{self._log_end()}"
        return ""

    def log(self) -> str:
        """The log of all runs."""
        if self._last_log is not None:
            return self._last_log
        try:
            return (self.folder / "log").read_text(encoding="utf-8", errors="replace")
        except OSError as error:
            raise HostGone(f"the log cannot be read: {error}") from None

    def end_text(self) -> str:
        """How the host ended, and the end of its log: the second half of a sentence."""
        try:
            self._processes[-1].wait(1)
        except subprocess.TimeoutExpired:
            return f", but its process still runs{self._log_end()}"
        return f", with {_how(self._processes[-1])}{self._log_end()}"

    def _start(self) -> None:
        ready, write_end = os.pipe()
        self._ready = open(ready, "rb", 0)
        words = [self.program, "--state", str(self.folder / "state"), "--socket", self.calls]
        words += ["--ready-fd", str(write_end)]
        with open(self.folder / "log", "ab") as log, open(write_end, "wb", 0):
            try:
                process = start_process(words + self._options, log, log, pass_fds=[write_end])
            except HostGone:
                self._ready.close()
                raise
        self._processes.append(process)
        reaper.guard(str(self.folder), process.pid)

    def _log_end(self) -> str:
        try:
            return f"; the end of its log:\n{self.log()[-_MOST_LOG:]}"
        except HostGone as error:
            return f"; {error}"


def start_process(
    words: Sequence[str], out: Stream, error: Stream, pass_fds: Sequence[int] = ()
) -> subprocess.Popen[bytes]:
    """In a session of its own, so that Ctrl-C ends the tests first, and they their programs."""
    try:
        return subprocess.Popen(
            words,
            stdin=subprocess.DEVNULL,
            stdout=out,
            stderr=error,
            start_new_session=True,
            pass_fds=pass_fds,
        )
    except OSError as failure:
        raise HostGone(f"{words[0]} cannot be started: {failure.strerror}") from None


def _parent_folder() -> str:
    parent = tempfile.gettempdir()
    return parent if len(os.fsencode(parent)) <= _LONGEST_PARENT else "/tmp"


def is_readable(pipe: IO[bytes], timeout: float) -> bool:
    poll = select.poll()
    poll.register(pipe, select.POLLIN)
    return bool(poll.poll(timeout * 1000))


def program_path(program: Optional[str]) -> str:
    name = program or os.environ.get("CLOCKHOST") or "clockhost"
    path = shutil.which(name)
    if path is None:
        raise HostGone(f'no program "{name}"; install it, or name it with $CLOCKHOST or program=')
    return path


def stop_process(process: subprocess.Popen[bytes], number: int) -> None:
    process.send_signal(number)
    try:
        process.wait(_LONGEST_STOP)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()


def _how(process: subprocess.Popen[bytes]) -> str:
    status = process.returncode
    return f"signal {-status}" if status < 0 else f"exit status {status}"


def _stop_all(processes: List[subprocess.Popen[bytes]]) -> None:
    for process in processes:
        stop_process(process, signal.SIGTERM)


def _end(pid: int, processes: List[subprocess.Popen[bytes]], folder: pathlib.Path) -> None:
    if os.getpid() != pid:  # a fork that ends; the host is that of its parent
        return
    _stop_all(processes)
    shutil.rmtree(folder, ignore_errors=True)
    reaper.release(str(folder))
