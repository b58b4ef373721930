import datetime

import pytest

from deskclock import NoReply, Phone, Refused
from deskclock.time_travel import Duration, instant_text, microseconds, seconds_since_1970

NOON = datetime.datetime(2026, 7, 1, 12, tzinfo=datetime.timezone.utc)


@pytest.mark.parametrize(
    "duration, seconds",
    [
        (0, 0),
        (1.5, 1.5),
        (datetime.timedelta(hours=2), 7200),
        ("90s", 90),
        ("2.5s", 2.5),
        ("1d2h3m4s", 93784),
        ("02:03:04", 7384),
    ],
)
def test_a_duration(duration: Duration, seconds: float) -> None:
    assert microseconds(duration) == seconds * 1_000_000


@pytest.mark.parametrize("text", ["", "1", "s", "1w", "1h 2m", "-1s", "1:2:3", "h1"])
def test_text_that_is_no_duration(text: str) -> None:
    with pytest.raises(ValueError, match="is no duration; use one as 90s"):
        microseconds(text)


def test_an_instant() -> None:
    for text in ("2026-07-01T12:00:00Z", "2026-07-01T14:00:00+02:00"):
        assert seconds_since_1970(text) == 1782907200
    assert seconds_since_1970(NOON) == seconds_since_1970(1782907200)
    assert instant_text(NOON) == "2026-07-01T12:00:00Z"
    with pytest.raises(ValueError, match="has no zone; add one"):
        seconds_since_1970("2026-07-01T12:00:00")


@pytest.mark.parametrize("number", [float("nan"), float("inf")])
def test_a_number_that_is_no_time(number: float) -> None:
    with pytest.raises(ValueError, match=f"{number} is no duration; should be a number of seconds"):
        microseconds(number)
    with pytest.raises(ValueError, match=f"{number} is no instant; should be seconds since 1970"):
        seconds_since_1970(number)


TEXTS = ["yesterday", "", "2026-02-30T00:00:00Z", "20260701T120000Z", "2026-07-01", "2026-07-01T12:00Z"]


@pytest.mark.parametrize("text", [*TEXTS, "2026-07-01T12:00:00.5Z", "2026-07-01T12:00:00+0200"])
def test_text_that_is_no_instant(text: str) -> None:
    with pytest.raises(ValueError, match=".* is no instant; use one as 2026-03-08T06:59:50Z"):
        seconds_since_1970(text)


def test_a_fraction_of_an_instant_is_dropped() -> None:
    assert seconds_since_1970(1782907200.9) == 1782907200
    assert seconds_since_1970(NOON.replace(microsecond=999_999)) == 1782907200


def test_time_passes(phone: Phone) -> None:
    assert phone.clock().speed == "paused"
    start = phone.clock().utc
    assert phone.advance("1h30m").utc - start == datetime.timedelta(minutes=90)
    phone.advance(datetime.timedelta(microseconds=1_500_000))
    assert phone.advance(1.5).uptime == "01:30:03"
    assert phone.next().utc - start == datetime.timedelta(hours=2)


def test_whole_seconds_include_the_timers_of_the_next_milliseconds(phone: Phone) -> None:
    phone.keys["sntp-tz-offset"] = 1
    assert phone.advance("0.0005s").tz == "LOC00:00"
    assert phone.advance(0).tz == "LOC-1:00"


def test_the_clock_jumps(phone: Phone) -> None:
    assert phone.jump(NOON).utc == NOON
    assert phone.jump("2026-07-01T12:00:01Z").uptime == "00:00:00"
    phone.keys["sntp-tz-offset"] = 2
    phone.advance("1s")
    assert phone.jump(local="2026-07-01 14:00:00").utc == NOON
    with pytest.raises(TypeError, match="jump takes an instant or local=, and not both"):
        phone.jump(NOON, local="2026-07-01 14:00:00")
    with pytest.raises(TypeError):
        phone.jump()


@pytest.mark.phone(variant=3, at="2026-03-01T00:00:00Z")
def test_landmarks(phone: Phone) -> None:
    phone.keys["sntp-tz-offset"] = -5
    phone.advance("1s")
    state = phone.to("dst")
    assert state.local == "2026-03-08 01:59:50 (LOC, UTC-05:00)"
    assert state.note is not None and "2026-03-08 03:00:00" in state.note
    assert phone.to("leap-day").local.startswith("2028-02-28 23:59:50")


def test_a_move_that_is_refused_or_too_long(phone: Phone) -> None:
    with pytest.raises(Refused, match="daylight saving"):
        phone.to("dst")
    with pytest.raises(Refused):
        phone.advance(-1)
    with pytest.raises(NoReply, match="clock: no reply within 0.01 s"):
        phone.advance("3000d", timeout=0.01)


def test_speed(phone: Phone) -> None:
    assert phone.speed(60).speed == "60"
    assert phone.speed(0.5).speed == "0.5"
    assert phone.speed("max").speed == "max"
    assert phone.pause().speed == "paused"
    with pytest.raises(ValueError, match="the speed 1e-09 is too slow; should be 0 or at least 0.00"):
        phone.speed(1e-9)
    assert phone.speed(0).speed == "paused"
