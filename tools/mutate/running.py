"""One run of a test program, and how it ends: it passes, fails, or hangs."""

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
# By exit status or signal: the last two come of the limit.
ENDS = {0: PASSED, signal.SIGXCPU: HUNG, signal.SIGKILL: HUNG}

TICK = 1.0 / os.sysconf("SC_CLK_TCK")
BETWEEN_LOOKS = 0.25  # seconds
# Seconds without work after which nothing will ever wake a program; one that waits for another that
# works is given longer.
ASLEEP = 5.0
ASLEEP_BESIDE_OTHERS = 15.0


@dataclass
class Program:
    """A test program, and how long it computes on the unmutated tree."""

    name: str  # its path below the build
    bodies: tuple = ()  # the mutants it judges: the folders of their sources
    started: tuple = ()  # programs that it starts, as paths below the build
    seconds: float = 10.0  # until it is measured

    @property
    def executables(self):
        return (self.name, *self.started)

    @property
    def asleep(self):
        return ASLEEP_BESIDE_OTHERS if self.started else ASLEEP

    @property
    def limit(self):
        """In seconds of the processor, which a busy machine does not shorten."""
        return int(3 + 5 * self.seconds)


def outcome_of(program, folder):
    """Runs a test program of a workshop's folder, with a temporary folder of its own. It and what it
    started are ended when it does not end by itself."""
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as temporary:
        os.chmod(temporary, 0o711)  # some tests are another user for a while
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
    """Waits for the end of a process; false when all its threads sleep and nothing wakes them."""
    handle = os.pidfd_open(pid)
    try:
        worked, last = used(pid), time.monotonic()
        while not select.select([handle], [], [], BETWEEN_LOOKS)[0]:
            if awake(pid) or used(pid) > worked:
                worked, last = used(pid), time.monotonic()
            elif time.monotonic() - last > asleep:
                return False
        return True
    finally:
        os.close(handle)


def status(process):
    """The exit status or signal of a process, which stays unreaped: its group is still its own."""
    return os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOWAIT).si_status


def fields(stat):
    """What the kernel says of a process or thread after its name, which is in parentheses."""
    try:
        return stat.read_text().rpartition(")")[2].split()
    except OSError:  # ended meanwhile
        return ["X"]


def awake(pid):
    threads = pathlib.Path(f"/proc/{pid}/task").iterdir()
    return any(fields(thread / "stat")[0] != "S" for thread in threads)


def used(pid):
    """Seconds of the processor, of the process and of its children that it has waited for."""
    words = fields(pathlib.Path(f"/proc/{pid}/stat"))
    return sum(map(int, words[11:15])) * TICK
