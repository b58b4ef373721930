"""The methods and events of the protocol, and their JSON form. tests/test_methods.py compares the
tables with docs/reference/remote-protocol.md."""

import difflib
import json
from typing import Any, Dict, List, Mapping, NamedTuple, Tuple, Type, Union

Value = Union[int, str, bool]
ValueType = Union[Type[int], Type[str], Type[bool]]

_TYPES: Dict[str, ValueType] = {"int": int, "string": str, "bool": bool}
_LARGEST = 2**31  # an int of the protocol is smaller, and not below -_LARGEST

# method | request | reply
_METHODS = """
getTime | | getTimeStringReturn string
getTimeInts | | getTimeIntsHoursReturn, getTimeIntsMinutesReturn, getTimeIntsSecondsReturn int
getTimeUTCStr | getTimeUTCStrString string | getTimeUTCStrStringReturn string
getTimeUTCStrAndInts | getTimeUTCStrAndIntsString string | getTimeUTCStrAndIntsReturn bool, getTimeUTCStrAndIntsHoursReturn, getTimeUTCStrAndIntsMinutesReturn, getTimeUTCStrAndIntsSecondsReturn int
getTimeVal | | getTimeValReturn int
getDisplayTimeVal | | getDisplayTimeValReturn int
setTime | setTimeHours, setTimeMinutes, setTimeSeconds int | setTimeReturn bool
setTimeInt | setTime int | no reply
getDate | | getDateStringReturn string
getDateShort | | getDateShortStringReturn string
getDateInts | | getDateIntsDayReturn, getDateIntsMonthReturn, getDateIntsYearReturn int
getDateUTCStr | getDateUTCStrString string | getDateUTCStrStringReturn string
getDateShortUTCStr | getDateShortUTCStrString string | getDateShortUTCStrStringReturn string
getDateUTCStrAndInts | getDateUTCStrAndIntsString string | getDateUTCStrAndIntsReturn bool, getDateUTCStrAndIntsDayReturn, getDateUTCStrAndIntsMonthReturn, getDateUTCStrAndIntsYearReturn int
setDate | setDateDay, setDateMonth, setDateYear int | setDateReturn bool
getUTCTimeTimeVal | getUTCTimeTimeValTime int | getUTCTimeTimeValStringReturn string
getUTCTimeInts | getUTCTimeIntsHours, getUTCTimeIntsMins, getUTCTimeIntsSecs, getUTCTimeIntsDay, getUTCTimeIntsMonth, getUTCTimeIntsYear int | getUTCTimeIntsStringReturn string
observeTimeEvents | | observeTimeEventsReturn bool
unobserveTimeEvents | | unobserveTimeEventsReturn bool
setAlarmClock | setAlarmClockAlarmTime string | setAlarmClockReturn int
cancelAlarmClock | cancelAlarmClockAlarmId int | cancelAlarmClockReturn bool
setFallbackTime | | setFallbackTimeReturn string
isTimeSourceSntp | | isTimeSourceSntpReturn bool
"""

# event | parameters
_EVENTS = """
timezoneChangeEvent | timezoneChangeEventTimezone string
timeChangeEvent | timeChangeEventHours, timeChangeEventMinutes, timeChangeEventSeconds int
dateChangeEvent | dateChangeEventDay, dateChangeEventMonth, dateChangeEventYear int
alarmClockEvent | alarmClockEventAlarm int
"""


class Parameter(NamedTuple):
    name: str
    type: ValueType


Parameters = Tuple[Parameter, ...]


class Method(NamedTuple):
    request: Parameters
    reply: Parameters
    has_reply: bool


def parameters_of(cell: str) -> Parameters:
    """`a, b int, c bool`: a type counts for the names before it that have none."""
    found: List[Parameter] = []
    names: List[str] = []
    for part in filter(None, (part.strip() for part in cell.split(","))):
        name, _, kind = part.partition(" ")
        names.append(name)
        if kind:
            found += [Parameter(each, _TYPES[kind]) for each in names]
            names = []
    return tuple(found)


def _method(request: str, reply: str) -> Method:
    has_reply = reply != "no reply"
    return Method(parameters_of(request), parameters_of(reply) if has_reply else (), has_reply)


def _rows(table: str) -> List[List[str]]:
    return [[cell.strip() for cell in line.split("|")] for line in table.strip().splitlines()]


METHODS = {name: _method(request, reply) for name, request, reply in _rows(_METHODS)}
EVENTS = {name: parameters_of(parameters) for name, parameters in _rows(_EVENTS)}


def encode_call(name: str, parameters: Mapping[str, Value]) -> bytes:
    """Raises KeyError for an unknown method, TypeError and ValueError for parameters that it does not
    take."""
    if name not in METHODS:
        near = difflib.get_close_matches(name, METHODS, 1)
        hint = f'did you mean "{near[0]}"?' if near else "docs/reference/remote-protocol.md has them all"
        raise KeyError(f'no method "{name}"; {hint}')
    wanted = METHODS[name].request
    if parameters.keys() != {each.name for each in wanted}:
        takes = ", ".join(each.name for each in wanted) or "no parameters"
        raise TypeError(f"{name} takes {takes}; not {', '.join(parameters) or 'none'}")
    members = [{"name": each.name, "value": _checked(each, parameters[each.name])} for each in wanted]
    return encode_json({"name": name, "parameters": members})


def encode_json(message: Mapping[str, Any]) -> bytes:
    """Raises TypeError or ValueError for a value that JSON does not have."""
    try:
        return json.dumps(message, ensure_ascii=False, allow_nan=False).encode()
    except UnicodeEncodeError as error:
        wrong = error.object[error.start : error.end]
        raise ValueError(f"text with {wrong!r} cannot be sent; should be valid Unicode") from None


def decode_method(payload: bytes) -> Tuple[str, Dict[str, Value]]:
    """Name and parameters of a reply or an event. Raises ValueError for anything else."""
    try:
        message: Any = json.loads(payload)
        name, parameters = message["name"], message["parameters"]
        if type(name) is not str:
            raise ValueError(f"a method with the name {name!r}")
        return name, {each["name"]: each["value"] for each in parameters}
    except (KeyError, TypeError) as error:
        raise ValueError(f"a method without {error}") from None
    except RecursionError:
        raise ValueError("a method with too many levels") from None


def _checked(parameter: Parameter, value: Value) -> Value:
    if type(value) is not parameter.type:
        raise TypeError(f"{parameter.name} is {value!r}; should be of type {parameter.type.__name__}")
    if type(value) is int and not -_LARGEST <= value < _LARGEST:
        raise ValueError(f"{parameter.name} is {value}; an int has 32 bits")
    return value


def values_of(name: str, wanted: Parameters, given: Mapping[str, Value]) -> List[Value]:
    """The values of these parameters. Raises ValueError if one is missing or has another type."""
    for parameter in wanted:
        if type(given.get(parameter.name)) is not parameter.type:
            expected = f"{parameter.type.__name__} {parameter.name}"
            raise ValueError(f"{name} has no {expected}, but {dict(given)}")
    return [given[parameter.name] for parameter in wanted]
