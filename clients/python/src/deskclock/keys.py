"""The management keys of a telephone."""

from __future__ import annotations

import re
from typing import Any, Callable, Dict, Iterator, Mapping, NamedTuple, Optional, Union

from .errors import Refused

Control = Callable[..., Dict[str, Any]]


class KeyState(NamedTuple):
    value: Optional[str]  # None: it cannot be read
    settable: bool
    state: int  # 0: the user may set it; 4: the device sets it


class Keys(Mapping[str, str]):
    """Reads and writes the keys: `phone.keys["date-format"] = "1"`. All values are text.

    A set of the zone is applied a millisecond later: let time pass, as with `phone.advance("1s")`.
    Raises KeyError for an unknown key, and Refused for a value that the service does not take.
    """

    def __init__(self, control: Control) -> None:
        self._control = control

    def __getitem__(self, key: str) -> str:
        try:
            return str(self._control("get", key=key)["value"])
        except Refused as error:
            raise self._error(key, error) from None

    def __setitem__(self, key: str, value: Union[str, float, bool]) -> None:
        """An int, float or bool is written as text: 1, -5.5, true."""
        text = _text_of(key, value)
        try:
            self._control("set", key=key, value=text)
        except Refused as error:
            raise self._error(key, error) from None

    def __iter__(self) -> Iterator[str]:
        return iter(self.states())

    def __len__(self) -> int:
        return len(self.states())

    def states(self) -> Dict[str, KeyState]:
        """All keys, with one request."""
        return {
            each["key"]: KeyState(each["value"], each["settable"], each["state"])
            for each in self._control("keys")["keys"]
        }

    def reset(self) -> None:
        """Resets date and time format, if the user has set them, to the variant's defaults."""
        self._control("reset")

    def _error(self, key: str, error: Refused) -> Exception:
        return error if key in self.states() else KeyError(str(error))


def _text_of(key: str, value: Union[str, float, bool]) -> str:
    if not isinstance(value, (str, int, float)):
        raise TypeError(f"{key} is set to {value!r}; should be a str, an int, a float or a bool")
    text = str(value).lower() if isinstance(value, bool) else str(value)
    if isinstance(value, float) and not re.fullmatch(r"-?\d+\.\d+", text):
        raise ValueError(f"{key} is set to {text}; write such a number as text")
    return text
