"""One run of a test program, and how it ends: it passes, fails, or hangs."""

import os
import pathlib
import resource
import select
import shutil
import signal
import subprocess
import time
from dataclasses import dataclass

PASSED = "passed"
FAILED = "failed"
HUNG = "hung"
# By exit status or signal: the last two come of the limit.
ENDS = {0: PASSED, signal.SIGXCPU: HUNG, signal.SIGKILL: HUNG}

TICK = 1.0 / os.sysconf("SC_CLK_TCK")
BETWEEN_LOOKS = 0.25  # seconds
ASLEEP = 5.0  # seconds without work after which nothing will ever wake a program


@dataclass
class Program:
    """A test program, and how long it computes on the unmutated tree."""

    name: str
    seconds: float = 10.0  # until it is measured

    @property
    def limit(self):
        """In seconds of the processor, which a busy machine does not shorten."""
        return int(3 + 5 * self.seconds)


def outcome_of(program, path, temporary):
    """Runs a test program. It and what it started are ended when it does not end by itself."""
    shutil.rmtree(temporary, ignore_errors=True)
    temporary.mkdir()
    running = subprocess.Popen(
        [str(path), "--gtest_brief=1", "--gtest_fail_fast"],
        cwd=temporary,
        env={**os.environ, "TMPDIR": str(temporary)},
        stdin=subprocess.DEVNULL,
        stdout=subprocess.DEVNULL,
        stderr=subprocess.DEVNULL,
        start_new_session=True,
    )
    try:
        resource.prlimit(running.pid, resource.RLIMIT_CPU, (program.limit, program.limit))
        if not ends(running.pid):
            return HUNG
        return ENDS.get(status(running), FAILED)
    finally:
        os.killpg(running.pid, signal.SIGKILL)
        running.wait()


def ends(pid):
    """Waits for the end of a process; false when all its threads sleep and nothing wakes them."""
    handle = os.pidfd_open(pid)
    try:
        worked, last = used(pid), time.monotonic()
        while not select.select([handle], [], [], BETWEEN_LOOKS)[0]:
            if awake(pid) or used(pid) > worked:
                worked, last = used(pid), time.monotonic()
            elif time.monotonic() - last > ASLEEP:
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
