import pytest

from deskclock import Phone, Refused


def test_keys_are_a_mapping_of_texts(idle_phone: Phone) -> None:
    assert len(idle_phone.keys) == 16
    assert "date-format" in idle_phone.keys and "no-key" not in idle_phone.keys
    assert dict(idle_phone.keys)["daylight-save-zone-text"] == "United States"


def test_a_set_takes_text_numbers_and_truth(phone: Phone) -> None:
    phone.keys["date-format"] = 1
    phone.keys["time-format"] = "1"
    phone.keys["sntp-tz-offset"] = -5.5
    phone.keys["daylight-save"] = True
    keys = ("date-format", "time-format", "sntp-tz-offset", "daylight-save")
    assert [phone.keys[key] for key in keys] == ["1", "1", "-5.5", "true"]


@pytest.mark.parametrize("value", [None, [1], b"1"])
def test_a_value_that_is_no_text_or_number_is_refused(idle_phone: Phone, value: object) -> None:
    with pytest.raises(TypeError, match="sntp-addr is set to .*; should be a str, an int"):
        idle_phone.keys["sntp-addr"] = value  # type: ignore[assignment]


@pytest.mark.parametrize("value", [1e-07, 1e20, float("nan"), float("inf")])
def test_a_number_that_is_no_value_of_a_key_is_refused(idle_phone: Phone, value: float) -> None:
    with pytest.raises(ValueError, match="sntp-addr is set to .*; write such a number as text"):
        idle_phone.keys["sntp-addr"] = value


def test_a_set_of_the_zone_needs_time_to_pass(phone: Phone) -> None:
    phone.keys["sntp-tz-offset"] = -5.5
    phone.advance("1s")
    assert phone.clock().tz == "LOC05:30"


def test_an_unknown_key_is_a_key_error(phone: Phone) -> None:
    with pytest.raises(KeyError, match="did you mean"):
        phone.keys["date-formt"]
    with pytest.raises(KeyError, match='no key "date-formt"'):
        phone.keys["date-formt"] = 1


def test_a_value_that_the_service_does_not_take_is_refused(phone: Phone) -> None:
    with pytest.raises(Refused):
        phone.keys["daylight-save-zone-id"] = 15
    with pytest.raises(Refused):
        phone.keys["daylight-save-zone-text"] = "United States"


def test_states_say_who_may_set_a_key(phone: Phone) -> None:
    assert phone.keys.states()["time"].state == 0
    phone.keys["sntp-addr"] = "192.0.2.1"
    states = phone.keys.states()
    assert states["time"].state == 4
    assert states["date-format"] == ("0", True, 0)
    assert not states["daylight-save-zone-list"].settable


def test_reset(phone: Phone) -> None:
    phone.keys["date-format"] = 2
    phone.inject("user-data", key="DateFormat", value="on")
    phone.keys.reset()
    assert phone.keys["date-format"] == "0"
