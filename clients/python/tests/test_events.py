import threading
from typing import List

import pytest

from deskclock import DateChange, Event, HostGone, NoReply, Phone, TimeChange, TimezoneChange


def test_iteration_has_all_events_so_far(phone: Phone) -> None:
    phone.events.clear()
    phone.keys["sntp-tz-offset"] = 1
    phone.advance("1s")
    assert list(phone.events) == [TimezoneChange("LOC-1:00"), TimeChange(1, 0, 0), DateChange(16, 6, 2016)]
    assert list(phone.events) == []
    phone.advance("1h")
    assert next(phone.events) == TimeChange(2, 0, 0)
    phone.advance("2h")
    phone.events.clear()
    assert list(phone.events) == []


def test_wait_for_skips_the_event_and_those_before_it(phone: Phone) -> None:
    phone.advance("2d")
    assert phone.events.wait_for(DateChange, day=17) == DateChange(17, 6, 2016)
    assert phone.events.wait_for(TimeChange).hours == 1
    assert phone.events.wait_for(TimeChange, hours=0, minutes=0).seconds == 0


def test_wait_for_waits_while_the_clock_runs(phone: Phone) -> None:
    phone.to("hour")
    phone.events.clear()
    phone.speed("max")
    assert phone.events.wait_for(TimeChange, timeout=30) == TimeChange(1, 0, 0)


def test_an_event_that_does_not_come_leaves_the_others(phone: Phone) -> None:
    phone.events.clear()
    with pytest.raises(NoReply, match=r"no DateChange\(\) within 0 s; no event came"):
        phone.events.wait_for(DateChange, timeout=0)
    phone.advance("1h")
    with pytest.raises(NoReply, match=r"no TimeChange\(hours=7\) .*; of 1 .*hours=1, minutes=0"):
        phone.events.wait_for(TimeChange, timeout=0.01, hours=7)
    assert list(phone.events) == [TimeChange(1, 0, 0)]


def test_any_event(phone: Phone) -> None:
    phone.events.clear()
    phone.advance("1h")
    assert phone.events.wait_for(Event) == TimeChange(1, 0, 0)
    with pytest.raises(TypeError, match="Event has no hours, but no field"):
        phone.events.wait_for(Event, hours=1)


def test_a_restart_while_events_are_read(phone: Phone) -> None:
    phone.advance("1h")
    hours = []
    for event in phone.events:
        hours.append(event)
        if len(hours) == 1:
            phone.restart()
            phone.advance("1h")
    assert TimeChange(1, 0, 0) in hours[1:]


def test_an_unknown_field_is_an_error_of_the_test(idle_phone: Phone) -> None:
    with pytest.raises(TypeError, match="DateChange has no hour, but day, month, year"):
        idle_phone.events.wait_for(DateChange, hour=1)


def test_many_events_arrive_while_the_clock_moves(phone: Phone) -> None:
    """A host drops a client that leaves 1 MiB of events unread: here they are 1.5 MiB."""
    phone.advance("366d")
    assert sum(isinstance(event, TimeChange) for event in phone.events) == 366 * 24
    assert phone.get_date() == "17.06.17"


def test_threads_share_the_events(phone: Phone) -> None:
    phone.events.clear()
    found: List[Event] = []

    def read() -> None:
        while True:
            try:
                found.append(phone.events.wait_for(TimeChange, timeout=60))
            except HostGone:
                return

    readers = [threading.Thread(target=read) for _ in range(4)]
    for reader in readers:
        reader.start()
    phone.advance("10d")
    while len(found) < 240 and any(reader.is_alive() for reader in readers):
        phone.get_time_val()
    phone.close()
    for reader in readers:
        reader.join(30)
    assert len(found) == 240
