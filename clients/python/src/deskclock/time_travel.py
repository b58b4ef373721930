"""The virtual clock of a telephone: how its time passes and jumps."""

from __future__ import annotations

import dataclasses
import datetime
import math
import re
from typing import Any, Literal, Optional, Union

from .requests import Requests

Duration = Union[str, float, datetime.timedelta]
"""Seconds, a timedelta, or text as `90s`, `2.5s`, `15m`, `1h30m`, `7d` or `HH:MM:SS`."""

Instant = Union[str, float, datetime.datetime]
"""Seconds since 1970-01-01 UTC, a datetime with its zone, or text as `2026-03-08T06:59:50Z` or
`2026-03-08T06:59:50+00:00`. A fraction of a second is dropped."""

Landmark = Literal["hour", "midnight", "dst", "leap-day", "2038"]

_UNITS = {"d": 86400, "h": 3600, "m": 60, "s": 1}  # seconds
_UNIT_TEXT = re.compile(r"(\d+(?:\.\d+)?)([dhms])")
_INSTANT_TEXT = re.compile(r"(\d{4}-\d\d-\d\d)[T ](\d\d:\d\d:\d\d)(Z|[+-]\d\d:\d\d)?", re.ASCII)
_SLOWEST = 0.000001  # virtual seconds in each real second
_1970 = datetime.datetime(1970, 1, 1, tzinfo=datetime.timezone.utc)
_LONG = 60  # seconds of real time: a move over many hours, with their timers, takes a while


@dataclasses.dataclass(frozen=True)
class ClockState:
    utc: datetime.datetime  # the telephone's system time
    local: str  # as `2026-03-08 03:00:00 (DST, UTC-04:00)`
    tz: str  # the POSIX TZ value
    speed: str  # `paused`, `max`, or virtual seconds in each real second
    uptime: str  # since power-on, as `00:01:30` or `1d 00:01:30`
    timers: int  # how many are armed
    next: Optional[str]  # until the next timer expires, as `in 00:00:10`
    note: Optional[str]  # what may surprise about the move


class TimeTravel(Requests):
    """Moves the clock. Each method returns the clock's state afterwards.

    timeout: seconds of real time until NoReply is raised; the move then goes on.
    """

    def clock(self) -> ClockState:
        """The state of the clock."""
        return self._clock("show", self.timeout)

    def advance(self, duration: Duration, timeout: float = _LONG) -> ClockState:
        """Lets time pass; every timer on the way expires at its own instant. A whole number of seconds
        also includes the timers that are due a few milliseconds later; a fraction is exact."""
        micros = microseconds(duration)
        if micros % 1_000_000:
            return self._clock("advance", timeout, microseconds=micros)
        return self._clock("advance", timeout, seconds=micros // 1_000_000)

    def next(self, timeout: float = _LONG) -> ClockState:
        """Lets time pass up to the next timer."""
        return self._clock("next", timeout)

    def jump(self, to: Optional[Instant] = None, *, local: Optional[str] = None) -> ClockState:
        """Sets the system clock, as another program would; uptime and timers do not change. Either an
        instant, or `local`, a time in the telephone's zone as `2026-03-08 01:59:50`."""
        if (to is None) == (local is None):
            raise TypeError("jump takes an instant or local=, and not both")
        if local is not None:
            return self._clock("jump", self.timeout, local=local)
        assert to is not None
        return self._clock("jump", self.timeout, seconds=seconds_since_1970(to))

    def to(self, landmark: Landmark, timeout: float = _LONG) -> ClockState:
        """Goes to ten seconds before the landmark, and pauses."""
        return self._clock("to", timeout, landmark=landmark)

    def pause(self) -> ClockState:
        """Stops the clock."""
        return self._clock("pause", self.timeout)

    def speed(self, speed: Union[float, Literal["max"]]) -> ClockState:
        """Lets the clock run: virtual seconds in each real second; "max" is as fast as possible.

        Events come then at any time, and only the phone's own methods read them. Wait with
        `events.wait_for`: the host drops a client that leaves 1 MiB of them unread.
        """
        if not isinstance(speed, str) and 0 < speed < _SLOWEST:
            raise ValueError(f"the speed {speed} is too slow; should be 0 or at least {_SLOWEST:f}")
        text = speed if isinstance(speed, str) else f"{speed:f}"
        return self._clock("speed", self.timeout, speed=text)

    def _clock(self, action: str, timeout: float, **members: Any) -> ClockState:
        reply = self.control("clock", timeout, action=action, **members)
        return ClockState(
            datetime.datetime.strptime(reply["utc"], "%Y-%m-%dT%H:%M:%S%z"),
            reply["local"],
            reply["tz"],
            reply["speed"],
            reply["uptime"],
            reply["timers"],
            reply.get("next"),
            reply.get("note"),
        )


def microseconds(duration: Duration) -> int:
    if isinstance(duration, str):
        duration = _seconds_in(duration)
    if isinstance(duration, datetime.timedelta):
        return duration // datetime.timedelta(microseconds=1)
    try:
        return round(duration * 1_000_000)
    except (ValueError, OverflowError):  # not a number, or infinite
        raise ValueError(f"{duration} is no duration; should be a number of seconds") from None


def seconds_since_1970(instant: Instant) -> int:
    if isinstance(instant, (int, float)):
        return _whole(instant)
    if isinstance(instant, str):
        instant = _datetime_in(instant)
    if instant.tzinfo is None:
        raise ValueError(f"{instant} has no zone; add one, as in 2026-03-08T06:59:50Z")
    return (instant - _1970) // datetime.timedelta(seconds=1)


def instant_text(instant: Instant) -> str:
    seconds = datetime.timedelta(seconds=seconds_since_1970(instant))
    return (_1970 + seconds).strftime("%Y-%m-%dT%H:%M:%SZ")


def _whole(seconds: float) -> int:
    try:
        return math.floor(seconds)
    except (ValueError, OverflowError):  # not a number, or infinite
        raise ValueError(f"{seconds} is no instant; should be seconds since 1970-01-01") from None


def _datetime_in(text: str) -> datetime.datetime:
    """The same texts in all versions of Python."""
    try:
        if match := _INSTANT_TEXT.fullmatch(text):
            date, time, zone = match.groups()
            return datetime.datetime.fromisoformat(f"{date}T{time}{zone or ''}".replace("Z", "+00:00"))
    except ValueError:  # no such day or time
        pass
    raise ValueError(f'"{text}" is no instant; use one as 2026-03-08T06:59:50Z')


def _seconds_in(text: str) -> float:
    if match := re.fullmatch(r"(\d+):(\d\d):(\d\d)", text):
        hours, minutes, seconds = (int(part) for part in match.groups())
        return hours * 3600 + minutes * 60 + seconds
    if not text or _UNIT_TEXT.sub("", text):
        raise ValueError(f'"{text}" is no duration; use one as 90s, 2.5s, 1h30m, 7d or 02:30:00')
    return sum(float(number) * _UNITS[unit] for number, unit in _UNIT_TEXT.findall(text))
