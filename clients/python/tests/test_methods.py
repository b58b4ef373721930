"""The tables and the typed methods are those of the protocol's page."""

import dataclasses
import inspect
import re
import typing
from typing import Dict, List

import pytest

from deskclock.calls import Calls, Date, TimeOfDay
from deskclock.events import CLASSES
from deskclock.methods import (
    EVENTS,
    METHODS,
    Method,
    Parameters,
    decode_method,
    encode_call,
    parameters_of,
    values_of,
)


def table_of(page: str, title: str) -> List[List[str]]:
    """The rows of the table whose first column has this title."""
    (table,) = re.findall(rf"^\| {title} \|.*\n\|---.*\n((?:\|.*\n)+)", page, re.MULTILINE)
    return [[cell.strip() for cell in row.split("|")[1:-1]] for row in table.splitlines()]


def parameters_in(cell: str) -> Parameters:
    plain = re.sub(r"`(\w+)`", r"\1", cell).replace("–", "")
    return parameters_of(re.sub(r"(string), a POSIX TZ value", r"\1", plain))


def test_the_methods_are_those_of_the_page(protocol_page: str) -> None:
    page = {}
    for name, request, reply, _ in table_of(protocol_page, "method"):
        has_reply = reply != "no reply"
        parameters = parameters_in(reply) if has_reply else ()
        page[name.strip("`")] = Method(parameters_in(request), parameters, has_reply)
    assert METHODS == page
    assert len(METHODS) == 23


def test_the_events_are_those_of_the_page(protocol_page: str) -> None:
    rows = table_of(protocol_page, "event")
    assert EVENTS == {name.strip("`"): parameters_in(cell) for name, cell, _ in rows}
    assert len(EVENTS) == 4


def snake(name: str) -> str:
    return re.sub(r"(?<=[a-z])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", "_", name).lower()


@pytest.mark.parametrize("name", METHODS)
def test_each_method_has_a_typed_one(name: str) -> None:
    typed = getattr(Calls, snake(name))
    hints = typing.get_type_hints(typed)
    result = hints.pop("return")
    request, reply, _ = METHODS[name]
    assert list(hints.values()) == [parameter.type for parameter in request]
    assert list(inspect.signature(typed).parameters)[1:] == list(hints)
    assert typed.__doc__
    types = [parameter.type for parameter in reply]
    if result in (TimeOfDay, Date):
        assert types in ([int] * 3, [bool] + [int] * 3)
    elif result is not type(None):
        assert types == [result]
    else:
        assert types in ([], [bool])


def test_there_is_no_other_typed_method() -> None:
    own = [name for name in vars(Calls) if not name.startswith("_")]
    assert sorted(own) == sorted(snake(name) for name in METHODS)


@pytest.mark.parametrize("name", EVENTS)
def test_each_event_has_a_class_with_its_fields(name: str) -> None:
    fields = dataclasses.fields(CLASSES[name])
    hints = typing.get_type_hints(CLASSES[name])
    assert [hints[field.name] for field in fields] == [each.type for each in EVENTS[name]]
    for field, parameter in zip(fields, EVENTS[name]):
        assert parameter.name == name + field.name.capitalize()


@pytest.mark.parametrize("value", [2**31 - 1, -(2**31), 0])
def test_an_int_of_the_protocol_is_encoded(value: int) -> None:
    call = {"setTime": value}
    assert decode_method(encode_call("setTimeInt", call)) == ("setTimeInt", call)


@pytest.mark.parametrize("value", ["", "\u00fc\0\u2028"])
def test_a_text_of_the_protocol_is_encoded(value: str) -> None:
    call = {"setAlarmClockAlarmTime": value}
    assert decode_method(encode_call("setAlarmClock", call)) == ("setAlarmClock", call)


@pytest.mark.parametrize("value", [2**31, -(2**31) - 1])
def test_an_int_of_more_than_32_bits_is_refused(value: int) -> None:
    with pytest.raises(ValueError, match="setTime is -?[0-9]+; an int has 32 bits"):
        encode_call("setTimeInt", {"setTime": value})


@pytest.mark.parametrize("value", [1.5, None, b"x", "1", True])
def test_a_value_of_another_type_is_refused(value: object) -> None:
    with pytest.raises(TypeError, match="setTime is .*; should be of type int"):
        encode_call("setTimeInt", {"setTime": value})  # type: ignore[dict-item]


BROKEN = [b"", b"x", b"\xff", b"[]", b"1", b"{}", b'{"name":"m"}', b'{"name":"m","parameters":[1]}']
BROKEN += [b'{"name":[],"parameters":[]}', b"[" * 100_000]


@pytest.mark.parametrize("payload", BROKEN)
def test_a_broken_method_is_refused(payload: bytes) -> None:
    with pytest.raises(ValueError):
        decode_method(payload)


@pytest.mark.parametrize("given", [{}, {"a": 1}, {"a": True}, {"b": "x"}])
def test_a_reply_without_a_parameter_of_its_type_is_refused(given: Dict[str, object]) -> None:
    wanted = parameters_of("a string")
    assert values_of("m", wanted, {"a": "x", "b": 1}) == ["x"]
    with pytest.raises(ValueError, match="m has no str a"):
        values_of("m", wanted, given)  # type: ignore[arg-type]
