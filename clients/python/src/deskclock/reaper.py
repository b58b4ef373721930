"""Ends the hosts of a Python that cannot do it any more, because a signal has killed it.

It is a process of its own, which runs this file. Its input names the hosts, and ends with that Python.
"""

import contextlib
import json
import os
import shutil
import signal
import sys
import threading
import time
from typing import Any, Dict, List, Optional, Tuple

_LONGEST_STOP = 10.0  # seconds

_lock = threading.Lock()
_owner = 0  # the process that started the reaper, which a fork is not
_input = -1  # the reaper's input
_process = 0  # the reaper's number


def guard(folder: str, host: int) -> None:
    """folder: to be removed; the command line of the process `host` contains it. A second call for the
    folder replaces the host."""
    _tell(folder, host)


def release(folder: str) -> None:
    _tell(folder, None)


def _tell(folder: str, host: Optional[int]) -> None:
    with _lock:
        try:
            if _owner != os.getpid():
                _start()
            os.write(_input, json.dumps([folder, host]).encode() + b"\n")
        except OSError:
            pass  # no reaper: the end of Python still ends the hosts, unless a signal kills it


def _start() -> None:
    global _owner, _input, _process
    if _input >= 0:
        os.close(_input)  # the parent's
    read_end, _input = os.pipe()
    try:
        actions: List[Tuple[Any, ...]] = [(os.POSIX_SPAWN_DUP2, read_end, 0)]
        actions += [(os.POSIX_SPAWN_OPEN, each, os.devnull, os.O_WRONLY, 0) for each in (1, 2)]
        words = [sys.executable, "-I", "-S", __file__]
        _process = os.posix_spawn(sys.executable, words, os.environ, file_actions=actions)
    finally:
        os.close(read_end)
    _owner = os.getpid()


def main() -> None:
    os.setsid()  # so that a signal to the group of that Python leaves it alone
    hosts: Dict[str, int] = {}
    for line in sys.stdin:
        folder, host = json.loads(line)
        hosts.pop(folder, None)
        if host is not None:
            hosts[folder] = host
    for folder, host in hosts.items():
        _stop(folder, host)
        shutil.rmtree(folder, ignore_errors=True)


def _stop(folder: str, host: int) -> None:
    end = time.monotonic() + _LONGEST_STOP
    number = int(signal.SIGTERM)
    while _is_host(folder, host):
        with contextlib.suppress(ProcessLookupError):
            os.kill(host, number)
        time.sleep(0.02)
        number = signal.SIGKILL if time.monotonic() > end else 0


def _is_host(folder: str, host: int) -> bool:
    """The number may be that of another process by now."""
    try:
        with open(f"/proc/{host}/cmdline", "rb") as words:
            return os.fsencode(folder) in words.read()
    except OSError:
        return False


if __name__ == "__main__":
    main()
