"""Events of a telephone, and the queue from which they are read."""

from __future__ import annotations

import contextlib
import dataclasses
from collections import deque
from typing import Any, Callable, Deque, Dict, Iterator, Optional, Type, TypeVar

from .connection import Connection
from .errors import HostGone, NoReply, PhoneError
from .methods import EVENTS, decode_method, values_of

MOST_EVENTS = 100_000  # in the queue; then the oldest ones are lost
_MOST_SHOWN = 10  # events in the message of an error


class Event:
    """Base of the four events."""


@dataclasses.dataclass(frozen=True)
class TimezoneChange(Event):
    timezone: str  # a POSIX TZ value


@dataclasses.dataclass(frozen=True)
class TimeChange(Event):
    hours: int  # 0-23, local time
    minutes: int  # 0-59
    seconds: int  # 0-59


@dataclasses.dataclass(frozen=True)
class DateChange(Event):
    day: int  # 1-31, local date
    month: int  # 1-12
    year: int  # as 2026


@dataclasses.dataclass(frozen=True)
class AlarmClock(Event):
    alarm: int  # never raised: alarms are not implemented


E = TypeVar("E", bound=Event)

# The fields of a class have the order of the event's parameters.
CLASSES: Dict[str, Type[Event]] = {
    "timezoneChangeEvent": TimezoneChange,
    "timeChangeEvent": TimeChange,
    "dateChangeEvent": DateChange,
    "alarmClockEvent": AlarmClock,
}


def decode_event(payload: bytes) -> Event:
    name, parameters = decode_method(payload)
    if name not in CLASSES:
        raise ValueError(f'an unknown event "{name}"')
    return CLASSES[name](*values_of(name, EVENTS[name], parameters))


class Events(Iterator[Event]):
    """The events that were not read yet, oldest first. Any thread may read; each event is read once.

    Iteration ends when all events that the host has raised so far are read; `list(phone.events)`
    reads them all. More may come later. After the end of the host, those that it sent before come
    first, then HostGone is raised.
    """

    _connection: Connection

    def __init__(self, sync: Callable[[], object], most: int = MOST_EVENTS):
        self._sync = sync  # a call: events that the host raised before it come before its reply
        self._queue: Deque[Event] = deque()
        self._most = most
        self._lost = 0

    def connect(self, connection: Connection) -> None:
        """Begins anew, with the events of this connection."""
        self._queue.clear()
        self._lost = 0
        self._connection = connection
        connection.on_event = self._add

    def __next__(self) -> Event:
        event = self._connection.wait(self._pop, 0)
        if event is None:
            with contextlib.suppress(HostGone):  # what it sent before its end can be read
                self._sync()
            event = self._connection.wait(self._pop, 0)
        if event is None:
            raise StopIteration
        return event

    def wait_for(self, kind: Type[E], timeout: float = 2, **fields: object) -> E:
        """Waits for such an event, and skips it and those before it. `Event` is any.

        timeout: seconds of real time. While the clock is paused, events come only if a step such as
        `advance` raised them. fields: those that the event must have, as `day=1`.
        Raises NoReply if none comes; the events that did come remain unread.
        """
        names = [field.name for field in dataclasses.fields(kind)] if kind is not Event else []
        if unknown := fields.keys() - set(names):
            has = ", ".join(names) or "no field"
            raise TypeError(f"{kind.__name__} has no {', '.join(unknown)}, but {has}")
        event = self._connection.wait(lambda: self._pop_match(kind, fields), timeout)
        if event is None:
            came = self._connection.wait(self._shown, 0)
            wanted = ", ".join(f"{name}={value!r}" for name, value in fields.items())
            raise NoReply(f"no {kind.__name__}({wanted}) within {timeout:g} s; {came}")
        return event

    def clear(self) -> None:
        """Skips all events that the host has raised so far."""
        self._sync()
        self._connection.wait(self._clear, 0)

    # All below runs with the connection's lock held.

    def _add(self, payload: bytes) -> None:
        if len(self._queue) == self._most:
            self._queue.popleft()
            self._lost += 1
        self._queue.append(decode_event(payload))

    def _pop(self) -> Optional[Event]:
        self._check_lost()
        return self._queue.popleft() if self._queue else None

    def _pop_match(self, kind: Type[E], fields: Dict[str, Any]) -> Optional[E]:
        self._check_lost()
        for index, event in enumerate(self._queue):
            if isinstance(event, kind) and fields.items() <= vars(event).items():
                for _ in range(index + 1):
                    self._queue.popleft()
                return event
        return None

    def _clear(self) -> bool:
        self._queue.clear()
        self._lost = 0
        return True

    def _check_lost(self) -> None:
        if self._lost:
            lost, self._lost = self._lost, 0
            raise PhoneError(f"{lost} events were lost; at most {self._most} can wait to be read")

    def _shown(self) -> str:
        last = ", ".join(str(event) for event in list(self._queue)[-_MOST_SHOWN:])
        return f"of {len(self._queue)} unread events the last are {last}" if last else "no event came"
