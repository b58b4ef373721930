import os
import pathlib
import subprocess

import pytest

from deskclock import Phone, PhoneError


def replay(scenario: pathlib.Path) -> "subprocess.CompletedProcess[str]":
    words = [os.environ["CLOCKHOST"], "--scenario", str(scenario)]
    return subprocess.run(words, stderr=subprocess.PIPE, text=True, timeout=60)


def test_a_recording_is_a_scenario_that_passes(phone: Phone, tmp_path: pathlib.Path) -> None:
    phone.advance("1s")
    recording = phone.record(tmp_path / "day.scenario")
    phone.keys["sntp-tz-offset"] = 2
    phone.to("midnight")
    phone.advance("10s")
    assert phone.get_date() == "17.06.16"
    text = recording.stop()
    assert recording.stop() == text
    recording.close()
    assert text == (tmp_path / "day.scenario").read_text()
    assert "set sntp-tz-offset 2" in text and "getDateStringReturn=17.06.16" in text
    assert "expect event dateChangeEvent" in text
    assert replay(recording.file).returncode == 0
    recording.file.write_text(text.replace("=17.06.16", "=18.06.16"))
    assert "got getDateStringReturn=17.06.16" in replay(recording.file).stderr


def test_a_recording_that_cannot_begin_says_why(phone: Phone, tmp_path: pathlib.Path) -> None:
    phone.keys["sntp-tz-offset"] = 2
    with pytest.raises(PhoneError, match="did not begin: .*let time pass"):
        phone.record(tmp_path / "a.scenario")
    with pytest.raises(PhoneError, match="did not begin: .*none/a.scenario"):
        phone.advance("1s")
        phone.record(tmp_path / "none/a.scenario")


def test_a_recording_whose_host_dies_keeps_what_was_done(
    phone: Phone, tmp_path: pathlib.Path
) -> None:
    recording = phone.record(tmp_path / "a.scenario")
    phone.keys["date-format"] = 2
    assert phone._host is not None
    phone._host.stop(power_cut=True)
    for _ in range(2):
        with pytest.raises(PhoneError, match="the recording is not complete: .*the host"):
            recording.stop()
    assert "set date-format 2" in recording.file.read_text()
    assert replay(recording.file).returncode == 0
