"""The 23 methods of the clock, typed. Each is one remote call, answered in real time."""

from __future__ import annotations

from typing import List, NamedTuple, Type, TypeVar

from .errors import ProtocolError, Refused
from .methods import METHODS, Value, values_of
from .requests import Requests

T = TypeVar("T", int, str, bool)


class TimeOfDay(NamedTuple):
    hours: int  # 0-23
    minutes: int  # 0-59
    seconds: int  # 0-59


class Date(NamedTuple):
    day: int  # 1-31
    month: int  # 1-12
    year: int  # as 2026


class Calls(Requests):
    """Calls the clock. A method whose reply reports false raises Refused; every method raises NoReply
    if no reply comes within `timeout`."""

    def get_time(self) -> str:
        """The local time as the telephone shows it: `HH:MM`, on the 12-hour clock `hh:MMam`."""
        return self._one("getTime", str)

    def get_time_ints(self) -> TimeOfDay:
        """The local time."""
        return TimeOfDay(*self._ints("getTimeInts"))

    def get_time_utc_str(self, utc: str) -> str:
        """The local time at an instant such as `2026-07-01T12:00:00+00:00`, as get_time shows it. Text
        of another form, also with Z, gives 00:00."""
        return self._one("getTimeUTCStr", str, utc)

    def get_time_utc_str_and_ints(self, utc: str) -> TimeOfDay:
        """The local time at an instant such as `2026-07-01T12:00:00+00:00`. Text of another form, also
        with Z, is refused."""
        return TimeOfDay(*self._ints("getTimeUTCStrAndInts", utc))

    def get_time_val(self) -> int:
        """Now: seconds since 1970-01-01 UTC."""
        return self._one("getTimeVal", int)

    def get_display_time_val(self) -> int:
        """The local time: seconds since 1970-01-01 on the telephone's own clock."""
        return self._one("getDisplayTimeVal", int)

    def set_time(self, hours: int, minutes: int, seconds: int) -> None:
        """Sets the local time by hand. The service normalises the values: 24 hours are midnight. On the
        other side of a daylight-saving change of this day, the time moves by an hour."""
        self._must("setTime", hours, minutes, seconds)

    def set_time_int(self, time: int) -> None:
        """Sets the system time, in seconds since 1970-01-01 UTC, unless a time server is configured.
        The protocol has no reply to it; this returns when the service has handled it."""
        self.call("setTimeInt", setTime=time)
        self.get_time_val()  # calls are answered in order

    def get_date(self) -> str:
        """The local date in the current date format, as `05.03.26`."""
        return self._one("getDate", str)

    def get_date_short(self) -> str:
        """The local date without the year, in the current date format, as `05.03.`."""
        return self._one("getDateShort", str)

    def get_date_ints(self) -> Date:
        """The local date."""
        return Date(*self._ints("getDateInts"))

    def get_date_utc_str(self, utc: str) -> str:
        """The local date at an instant such as `2026-07-01T12:00:00+00:00`, as get_date shows it. Text
        of another form, also with Z, gives 00.00.00."""
        return self._one("getDateUTCStr", str, utc)

    def get_date_short_utc_str(self, utc: str) -> str:
        """The local date at an instant such as `2026-07-01T12:00:00+00:00`, without the year. Text of
        another form, also with Z, gives 00.00."""
        return self._one("getDateShortUTCStr", str, utc)

    def get_date_utc_str_and_ints(self, utc: str) -> Date:
        """The local date at an instant such as `2026-07-01T12:00:00+00:00`. Text of another form, also
        with Z, is refused."""
        return Date(*self._ints("getDateUTCStrAndInts", utc))

    def set_date(self, day: int, month: int, year: int) -> None:
        """Sets the local date by hand. year: 1970-2037, up to 99 counts from 2000; day and month are
        normalised. A date on the other side of a daylight-saving change moves the time by an hour."""
        self._must("setDate", day, month, year)

    def get_utc_time_time_val(self, time: int) -> str:
        """An instant, in seconds since 1970-01-01 UTC, as `2026-07-01T12:00:00+00:00`; 0 is now."""
        return self._one("getUTCTimeTimeVal", str, time)

    def get_utc_time_ints(
        self, hours: int, mins: int, secs: int, day: int, month: int, year: int
    ) -> str:
        """These fields as text, as `2026-07-01T12:00:00+00:00`. month: 1-12; year: since 1900, so that
        126 is 2026."""
        return self._one("getUTCTimeInts", str, hours, mins, secs, day, month, year)

    def observe_time_events(self) -> None:
        """Registers this client as an observer once more: each event then comes once more. A phone is
        registered once from its beginning."""
        self._must("observeTimeEvents")

    def unobserve_time_events(self) -> None:
        """Removes one registration."""
        self._must("unobserveTimeEvents")

    def set_alarm_clock(self, alarm_time: str) -> int:
        """Always 0: alarms are not implemented."""
        return self._one("setAlarmClock", int, alarm_time)

    def cancel_alarm_clock(self, alarm_id: int) -> None:
        """Always refused: alarms are not implemented."""
        self._must("cancelAlarmClock", alarm_id)

    def set_fallback_time(self) -> str:
        """Saves the time for the next start. Returns it, as `2026-07-01T12:00:00+00:00`."""
        return self._one("setFallbackTime", str)

    def is_time_source_sntp(self) -> bool:
        """Whether the time comes from a time server."""
        return self._one("isTimeSourceSntp", bool)

    def _values(self, method: str, *arguments: Value) -> List[Value]:
        request, reply, _ = METHODS[method]
        names = (parameter.name for parameter in request)
        given = self.call(method, **dict(zip(names, arguments)))
        try:
            return values_of(f"the reply to {method}", reply, given)
        except ValueError as error:
            raise ProtocolError(str(error)) from None

    def _one(self, method: str, kind: Type[T], *arguments: Value) -> T:
        (value,) = self._values(method, *arguments)
        assert isinstance(value, kind)  # by the table
        return value

    def _ints(self, method: str, *arguments: Value) -> List[int]:
        values = self._values(method, *arguments)
        if values[0] is False:
            raise Refused(f"{method}{arguments}: the reply is false")
        return [value for value in values if type(value) is int]

    def _must(self, method: str, *arguments: Value) -> None:
        if not self._one(method, bool, *arguments):
            raise Refused(f"{method}{arguments}: the reply is false")
