import time

import pytest

from deskclock import HostGone, Phone, Refused, TimeChange


def test_twenty_phones_live_a_week_in_less_than_a_minute() -> None:
    start = time.monotonic()
    with Phone.fleet(20, at="2026-03-02T00:00:00Z") as phones:
        assert len(phones) == 20 and len({repr(phone) for phone in phones[:]}) == 20
        phones.each(lambda phone: phone.advance("7d"))
        hours = phones.each(lambda phone: sum(isinstance(each, TimeChange) for each in phone.events))
        assert hours == [7 * 24] * 20
        assert {phone.get_date() for phone in phones} == {"09.03.26"}
    assert time.monotonic() - start < 60


def test_an_error_of_one_phone_is_raised_after_the_others_have_acted() -> None:
    with Phone.fleet(2) as phones:
        phones[1].keys["sntp-tz-offset"] = 1

        def act(phone: Phone) -> None:
            if phone is phones[0]:
                phone.advance(-1)
            phone.advance("1h")

        with pytest.raises(Refused):
            phones.each(act)
        assert [phone.get_time() for phone in phones] == ["00:00", "02:00"]


def test_a_fleet_that_cannot_start_says_why() -> None:
    with pytest.raises(HostGone, match="--variant"):
        Phone.fleet(2, variant=-1)


def test_a_closed_fleet() -> None:
    with Phone.fleet(2) as phones:
        phones.close()
        with pytest.raises(HostGone, match="this fleet is closed"):
            phones.each(lambda phone: phone.get_time())
    with pytest.raises(ValueError, match="a fleet of -1 phones; should be 0 or more"):
        Phone.fleet(-1)
