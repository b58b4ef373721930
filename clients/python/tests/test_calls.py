"""The 23 methods, at a telephone in New York on the last winter minute: 2026-03-08, 01:59:01."""

import pytest

from deskclock import Date, Phone, Refused, TimeOfDay

JULY = "2026-07-01T12:00:00+00:00"
NOW = 1772953141  # 2026-03-08T06:59:01Z


def test_the_time(idle_phone: Phone) -> None:
    assert idle_phone.get_time() == "01:59am"
    assert idle_phone.get_time_ints() == TimeOfDay(hours=1, minutes=59, seconds=1)
    assert idle_phone.get_time_val() == NOW
    assert idle_phone.get_display_time_val() == NOW - 5 * 3600


def test_the_date(idle_phone: Phone) -> None:
    assert idle_phone.get_date() == "03/08/26"
    assert idle_phone.get_date_short() == "03/08/"
    assert idle_phone.get_date_ints() == Date(day=8, month=3, year=2026)


def test_another_instant(idle_phone: Phone) -> None:
    assert idle_phone.get_time_utc_str(JULY) == "08:00am"
    assert idle_phone.get_time_utc_str_and_ints(JULY) == (8, 0, 0)
    assert idle_phone.get_date_utc_str(JULY) == "07/01/26"
    assert idle_phone.get_date_short_utc_str(JULY) == "07/01/"
    assert idle_phone.get_date_utc_str_and_ints(JULY) == (1, 7, 2026)


def test_text_that_is_no_instant_is_refused(idle_phone: Phone) -> None:
    with pytest.raises(Refused, match="getTimeUTCStrAndInts.*: the reply is false"):
        idle_phone.get_time_utc_str_and_ints("tomorrow")
    with pytest.raises(Refused, match="getDateUTCStrAndInts.*: the reply is false"):
        idle_phone.get_date_utc_str_and_ints("tomorrow")


def test_utc_texts(idle_phone: Phone) -> None:
    assert idle_phone.get_utc_time_time_val(1) == "1970-01-01T00:00:01+00:00"
    assert idle_phone.get_utc_time_time_val(0) == "2026-03-08T06:59:01+00:00"
    assert idle_phone.get_utc_time_ints(12, 0, 0, 1, 7, 126) == JULY


def test_set_by_hand(phone: Phone) -> None:
    phone.set_date(29, 2, 2028)
    phone.set_time(23, 59, 58)
    assert phone.get_date_ints() == (29, 2, 2028)
    assert phone.get_time_ints() == (23, 59, 58)
    with pytest.raises(Refused, match=r"setDate\(1, 1, 2038\): the reply is false"):
        phone.set_date(1, 1, 2038)


def test_set_of_the_system_time(phone: Phone) -> None:
    phone.set_time_int(NOW)
    assert phone.clock().utc.timestamp() == NOW
    assert phone.call("setTimeInt", setTime=NOW + 1) == {}
    assert phone.get_time_val() == NOW + 1


def test_registrations_as_an_observer_add_up(phone: Phone) -> None:
    phone.observe_time_events()
    phone.to("hour")
    phone.events.clear()
    phone.advance("10s")
    assert len(list(phone.events)) == 2
    phone.unobserve_time_events()
    phone.unobserve_time_events()
    phone.advance("1h")
    assert list(phone.events) == []
    with pytest.raises(Refused, match="unobserveTimeEvents"):
        phone.unobserve_time_events()


def test_the_saved_time(phone: Phone) -> None:
    phone.advance("1h")
    assert phone.set_fallback_time() == "2016-06-16T01:00:00+00:00"


def test_alarms_are_not_implemented(idle_phone: Phone) -> None:
    assert idle_phone.set_alarm_clock(JULY) == 0
    with pytest.raises(Refused, match=r"cancelAlarmClock\(1,\)"):
        idle_phone.cancel_alarm_clock(1)


def test_the_source_of_the_time(idle_phone: Phone) -> None:
    assert idle_phone.is_time_source_sntp() is False


def test_a_mistake_of_the_test_is_told_at_once(idle_phone: Phone) -> None:
    idle_phone.timeout = 600
    try:
        with pytest.raises(KeyError, match='no method "getTimes"; did you mean "getTime"'):
            idle_phone.call("getTimes")
        with pytest.raises(TypeError, match="getTimeUTCStr takes getTimeUTCStrString; not none"):
            idle_phone.call("getTimeUTCStr")
        with pytest.raises(TypeError, match="getTime takes no parameters; not a, b"):
            idle_phone.call("getTime", a=1, b=2)
        with pytest.raises(TypeError, match="getTimeUTCStrString is 5; should be of type str"):
            idle_phone.get_time_utc_str(5)  # type: ignore[arg-type]
        with pytest.raises(TypeError, match="setTimeHours is '1'; should be of type int"):
            idle_phone.set_time("1", 2, 3)  # type: ignore[arg-type]
        with pytest.raises(TypeError, match="setTimeHours is True; should be of type int"):
            idle_phone.set_time(True, 2, 3)
        with pytest.raises(ValueError, match="^a request of [0-9]* bytes is too long"):
            idle_phone.set_alarm_clock("x" * 1_100_000)
        with pytest.raises(ValueError, match=r"text with '\\udcff' cannot be sent; should be"):
            idle_phone.set_alarm_clock("a\udcff")
        with pytest.raises(ValueError, match=r"text with '\\udcff' cannot be sent; should be"):
            idle_phone.keys["sntp-addr"] = "\udcff"
    finally:
        idle_phone.timeout = 5
