"""The clock of desk telephones, for tests: spawn a telephone, move its time, check what it says.

Durations are seconds, timedeltas or text as `1h30m`; timeouts are seconds of real time.
"""

from .calls import Date, TimeOfDay
from .errors import HostGone, NoReply, PhoneError, ProtocolError, Refused
from .events import AlarmClock, DateChange, Event, Events, TimeChange, TimezoneChange
from .fleet import Fleet
from .keys import Keys, KeyState
from .phone import VARIANTS, Phone
from .recording import Recording
from .time_travel import ClockState

__version__ = "1.0.0"

__all__ = [
    "VARIANTS",
    "AlarmClock",
    "ClockState",
    "Date",
    "DateChange",
    "Event",
    "Events",
    "Fleet",
    "HostGone",
    "KeyState",
    "Keys",
    "NoReply",
    "Phone",
    "PhoneError",
    "ProtocolError",
    "Recording",
    "Refused",
    "TimeChange",
    "TimeOfDay",
    "TimezoneChange",
]
