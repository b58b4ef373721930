import gc
import os
import pathlib
import select
import shutil
import signal
import stat
import subprocess
import sys
import tempfile
import textwrap
import warnings
from typing import Callable, List

import pytest

from deskclock import HostGone, NoReply, Phone
from deskclock.host_process import HostProcess


def test_a_spawned_phone_shares_nothing_and_leaves_nothing() -> None:
    with Phone.spawn() as one, Phone.spawn() as two:
        states = one.status(), two.status()
        folders = [pathlib.Path(state["state"]).parent for state in states]
        for state, folder in zip(states, folders):
            assert stat.S_IMODE(folder.stat().st_mode) == 0o700
            for member in ("state", "socket", "deviceRoot"):
                assert folder in pathlib.Path(state[member]).parents
        assert folders[0] != folders[1]
        one.advance("1h")
        assert two.get_time() == "00:00"
    assert not any(folder.exists() for folder in folders)


def test_options_of_a_spawned_phone() -> None:
    with Phone.spawn(
        variant=3,
        software_type="Velmora QEX",
        mac="0001E3A1B2C3",
        network="up",
        at="2026-03-08T06:00:00Z",
        log_level=5,
        options=["--program", "/sbin/ntpclient=/bin/true"],
    ) as phone:
        status = phone.status()
        assert (status["variant"], status["mac"]) == (3, "0001E3A1B2C3")
        assert (status["softwareType"], status["network"]) == ("Velmora QEX", "up")
        assert status["system"] == "2026-03-08T06:00:00Z"
        assert status["logLevel"] == 5


def test_an_attached_phone_uses_a_host_that_runs(phone: Phone) -> None:
    with Phone.attach(phone.status()["socket"]) as other:
        phone.advance("1h")
        assert other.get_time() == "01:00"
        assert "ClockServiceInvoker initialised" in other.log()
        with pytest.raises(TypeError, match="only a spawned phone can be restarted"):
            other.restart()
    assert phone.get_time() == "01:00"


def test_a_closed_phone_says_so(phone: Phone) -> None:
    phone.close()
    phone.close()
    actions: List[Callable[[], object]] = [phone.get_time, phone.status, phone.events.__next__]
    for action in actions:
        with pytest.raises(HostGone, match="this phone is closed"):
            action()


def test_a_closed_phone_has_its_log(phone: Phone) -> None:
    phone.close()
    assert "shutting down" in phone.log() and phone.fault() == ""
    with pytest.raises(HostGone, match="this phone is closed"):
        phone.restart()


def test_a_host_whose_folder_is_removed(phone: Phone) -> None:
    assert phone._host is not None
    shutil.rmtree(phone._host.folder)
    phone._host.stop(power_cut=True)
    with pytest.raises(HostGone, match="signal 9; the log cannot be read: .*No such file"):
        phone.get_time()


def test_a_long_temporary_folder(tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch) -> None:
    folder = tmp_path / ("x" * 90)
    folder.mkdir()
    monkeypatch.setattr(tempfile, "tempdir", str(folder))
    with Phone.spawn() as phone:
        assert phone.get_time() == "00:00"


def test_a_host_that_dies_is_reported_with_the_end_of_its_log(phone: Phone) -> None:
    while "listening" not in phone.log():  # the host writes its log in a thread of its own
        phone.get_time()
    assert phone._host is not None
    phone._host.stop(power_cut=True)
    actions: List[Callable[[], object]] = [phone.get_time, phone.status]
    for action in actions:
        with pytest.raises(HostGone, match="signal 9; the end of its log:\n(.*\n)+.*listening"):
            action()


def test_a_host_that_does_not_start_says_why() -> None:
    with pytest.raises(HostGone, match="exit status 2; (.*\n)+.*--variant"):
        Phone.spawn(variant=-1)
    with pytest.raises(HostGone, match='no program "clckhost"; install it, or name it'):
        Phone.spawn(program="clckhost")


def test_a_program_that_the_system_does_not_start(tmp_path: pathlib.Path) -> None:
    program = tmp_path / "clockhost"
    program.write_text("#!/no/shell\n")
    program.chmod(0o700)
    with pytest.raises(HostGone, match="clockhost cannot be started: No such file"):
        Phone.spawn(program=str(program))


def test_a_host_that_hangs_at_its_start(tmp_path: pathlib.Path) -> None:
    program = tmp_path / "clockhost"
    program.write_text("#!/bin/sh\nexec sleep 100\n")
    program.chmod(0o700)
    host = HostProcess([], str(program))
    with pytest.raises(NoReply, match="the host did not start within 0.05 s"):
        host.wait_until_ready(0.05)
    host.close()


def test_a_restart_keeps_settings_and_saved_time() -> None:
    with Phone.spawn(at="2026-03-08T06:00:00Z") as phone:
        phone.keys["date-format"] = 1
        phone.advance("1h")
        phone.set_fallback_time()
        phone.advance("1h")
        phone.restart(power_cut=True)
        assert (phone.get_time(), phone.get_date()) == ("07:00", "26-03-08")
        phone.restart()
        phone.advance("1h")
        assert [event.hours for event in phone.events] == [8]  # type: ignore[attr-defined]
        assert phone.log().count("shutting down") == 1


def test_a_phone_that_is_lost_ends_its_host() -> None:
    phone = Phone.spawn()
    folder = pathlib.Path(phone.status()["state"])
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", ResourceWarning)
        del phone
        gc.collect()
    assert not folder.exists()


def test_a_python_that_ends_ends_its_hosts() -> None:
    program = """
        import deskclock
        phone = deskclock.Phone.spawn()
        print(phone.status()["state"])
        raise SystemExit(3)
    """
    done = subprocess.run(
        [sys.executable, "-c", textwrap.dedent(program)], stdout=subprocess.PIPE, text=True
    )
    assert done.returncode == 3
    assert not os.path.exists(done.stdout.strip())


def run_program(program: str) -> "subprocess.CompletedProcess[str]":
    words = [sys.executable, "-c", textwrap.dedent(program)]
    return subprocess.run(words, capture_output=True, text=True, timeout=60)


@pytest.mark.parametrize("end", ["sys.exit(0)", "phone.close(); sys.exit(0)", "del phone; gc.collect(); sys.exit(0)"])
def test_a_fork_that_ends_leaves_the_phone_to_its_parent(end: str) -> None:
    program = f"""
        import gc, os, sys, deskclock
        phone = deskclock.Phone.spawn()
        child = os.fork()
        if child == 0:
            {end}
        os.waitpid(child, 0)
        assert phone.get_time() == "00:00"
        assert "initialised" in phone.log()
        phone.restart()
        phone.close()
    """
    done = run_program(program)
    assert (done.returncode, done.stderr) == (0, "")


def test_a_fork_may_have_a_phone_of_its_own() -> None:
    program = """
        import os, sys, deskclock
        phone = deskclock.Phone.spawn()
        child = os.fork()
        if child == 0:
            with deskclock.Phone.spawn() as other:
                other.advance("1h")
                sys.exit(0 if other.get_time() == "01:00" else 1)
        assert os.waitpid(child, 0)[1] == 0
        assert phone.get_time() == "00:00"
    """
    done = run_program(program)
    assert (done.returncode, done.stderr) == (0, "")


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGKILL])
def test_a_python_that_is_killed_leaves_no_host(number: int) -> None:
    program = """
        import deskclock
        from deskclock import reaper
        lost = deskclock.Phone.spawn()
        lost.close()
        with deskclock.Phone.spawn() as phone, deskclock.Phone.spawn() as other:
            other.restart()
            states = [each.status()["state"] for each in (phone, other)]
            print(*states, reaper._process, flush=True)
            input()
    """
    words = [sys.executable, "-c", textwrap.dedent(program)]
    with subprocess.Popen(words, stdin=subprocess.PIPE, stdout=subprocess.PIPE) as python:
        assert python.stdout is not None
        *states, reaper = python.stdout.readline().decode().split()
        end_of_reaper = os.pidfd_open(int(reaper))
        python.send_signal(number)
    assert select.select([end_of_reaper], [], [], 60)[0]
    os.close(end_of_reaper)
    assert len(states) == 2
    assert not any(os.path.exists(os.path.dirname(state)) for state in states)
