"""Runs a test program: it passes, fails, or hangs."""

import os
import pathlib
import resource
import select
import signal
import subprocess
import tempfile
import time
from dataclasses import dataclass

PASSED = "passed"
FAILED = "failed"
HUNG = "hung"
# By exit status or signal: the last two are caused by the limit.
ENDS = {0: PASSED, signal.SIGXCPU: HUNG, signal.SIGKILL: HUNG}

TICK = 1.0 / os.sysconf("SC_CLK_TCK")
POLL_SECONDS = 0.25
# A program that does not run for so many seconds hangs. A program that waits for others gets longer.
ASLEEP = 5.0
ASLEEP_BESIDE_OTHERS = 15.0


@dataclass
class Program:
    """A test program, and its processor time on the unmutated tree."""

    name: str  # its path relative to the build
    bodies: tuple = ()  # judges mutants of sources in these folders
    started: tuple = ()  # programs that it starts, as paths relative to the build
    seconds: float = 10.0  # until it is measured

    @property
    def executables(self):
        return (self.name, *self.started)

    @property
    def asleep(self):
        return ASLEEP_BESIDE_OTHERS if self.started else ASLEEP

    @property
    def limit(self):
        """In seconds of processor time, so that a busy machine gives the same result."""
        return int(3 + 5 * self.seconds)


def outcome_of(program, folder):
    """Runs a test program of a workshop's folder, with a temporary folder of its own. Kills the program
    and its children if it does not end by itself."""
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as temporary:
        os.chmod(temporary, 0o711)  # some tests temporarily run as another user
        return outcome_in(program, folder, temporary)


def outcome_in(program, folder, temporary):
    running = subprocess.Popen(
        [str(folder / program.name), "--gtest_brief=1", "--gtest_fail_fast"],
        cwd=folder / "temporary",
        env={**os.environ, "TMPDIR": temporary},
        stdin=subprocess.DEVNULL,
        stdout=subprocess.DEVNULL,
        stderr=subprocess.DEVNULL,
        start_new_session=True,
    )
    try:
        resource.prlimit(running.pid, resource.RLIMIT_CPU, (program.limit, program.limit))
        if not ends(running.pid, program.asleep):
            return HUNG
        return ENDS.get(status(running), FAILED)
    finally:
        os.killpg(running.pid, signal.SIGKILL)
        running.wait()


def ends(pid, asleep):
    """Waits for the end of a process; false if all its threads sleep for `asleep` seconds."""
    handle = os.pidfd_open(pid)
    try:
        worked, last = used(pid), time.monotonic()
        while not select.select([handle], [], [], POLL_SECONDS)[0]:
            if awake(pid) or used(pid) > worked:
                worked, last = used(pid), time.monotonic()
            elif time.monotonic() - last > asleep:
                return False
        return True
    finally:
        os.close(handle)


def status(process):
    """The exit status or signal of a process. It stays unreaped, so that its group id is not reused."""
    return os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOWAIT).si_status


def fields(stat):
    """The fields of a process's or thread's stat file after its name, which is in parentheses."""
    try:
        return stat.read_text().rpartition(")")[2].split()
    except OSError:  # ended meanwhile
        return ["X"]


def awake(pid):
    threads = pathlib.Path(f"/proc/{pid}/task").iterdir()
    return any(fields(thread / "stat")[0] != "S" for thread in threads)


def used(pid):
    """The processor time of a process and of its reaped children, in seconds."""
    words = fields(pathlib.Path(f"/proc/{pid}/stat"))
    return sum(map(int, words[11:15])) * TICK
