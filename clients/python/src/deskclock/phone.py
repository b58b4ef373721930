"""A telephone: its clock, reached through its host."""

from __future__ import annotations

import os
import pathlib
from types import TracebackType
from typing import Any, Callable, Dict, List, Optional, Sequence, Type, Union

from .calls import Calls
from .connection import Connection
from .errors import HostGone
from .events import Events
from .fleet import Fleet
from .host_process import HostProcess
from .keys import Keys
from .recording import Recording, clockctl_path
from .time_travel import Instant, TimeTravel, instant_text

PathLike = Union[str, "os.PathLike[str]"]

VARIANTS = (0, 2, 3, 4)  # the hardware variants that differ in their defaults

_TIMEOUT = 5.0  # seconds
_LONGEST_START = 30.0  # seconds


class Phone(Calls, TimeTravel):
    """Calls the clock, reads its keys and events, and moves its time.

    `Phone.spawn()` starts a host of its own, `Phone.attach(socket)` uses one that runs. A phone is
    an observer from its beginning. Any thread may use it. Close it, or use it in a `with`; a closed
    phone raises HostGone, as does one whose host ends.
    """

    keys: Keys  # the management keys
    events: Events  # those that were not read yet

    def __init__(self, calls: str, control: str, host: Optional[HostProcess], timeout: float):
        self.timeout = timeout
        self._sockets = (calls, control)
        self._host = host
        self._pid = os.getpid()
        self._before_end: Callable[[], None] = lambda: None  # before its host ends, also for a restart
        self._after_restart: Callable[[], None] = lambda: None
        self.keys = Keys(self.control)
        self.events = Events(self.get_time_val)
        self._connect()

    @classmethod
    def attach(
        cls, socket: PathLike, control: Optional[PathLike] = None, timeout: float = _TIMEOUT
    ) -> Phone:
        """A phone whose host listens at this path; control: its control socket, by default the path
        with `.control` added. timeout: seconds that a request waits for its answer."""
        calls = os.fspath(socket)
        return cls(calls, os.fspath(control) if control else calls + ".control", None, timeout)

    @classmethod
    def spawn(
        cls,
        *,
        variant: int = 0,
        software_type: str = "",
        mac: str = "",
        network: str = "down",
        at: Optional[Instant] = None,
        speed: Union[float, str] = 0,
        log_level: int = 4,
        options: Sequence[str] = (),
        program: Optional[str] = None,
        timeout: float = _TIMEOUT,
    ) -> Phone:
        """A new phone with state, sockets and device root of its own. Its clock is paused.

        variant to log_level: the options of clockhost with these names; at: when the clock starts.
        options: further ones, as words. program: clockhost; by default $CLOCKHOST, else the one in
        $PATH. timeout: seconds that a request waits for its answer.
        """
        named = {
            "--variant": str(variant),
            "--software-type": software_type,
            "--mac": mac,
            "--network": network,
            "--at": "" if at is None else instant_text(at),
            "--speed": str(speed),
            "--log-level": str(log_level),
        }
        words = [word for option, text in named.items() if text for word in (option, text)]
        host = HostProcess([*words, *options], program)
        try:
            host.wait_until_ready(_LONGEST_START)
            return cls(host.calls, host.control, host, timeout)
        except BaseException:
            host.close()
            raise

    @classmethod
    def fleet(cls, count: int, **options: Any) -> Fleet:
        """So many new phones, each with these options of `spawn`."""
        return Fleet(lambda: cls.spawn(**options), count)

    def status(self) -> Dict[str, Any]:
        """What the telephone shows and why, and the state of its host."""
        return self.control("status")

    def inject(self, what: str, **members: Any) -> None:
        """Reports a change of the device to the service, as `inject("network", value="up")`."""
        self.control("inject", what=what, **members)

    def log(self) -> str:
        """The host's log: of a spawned phone all of it, also when it is closed, otherwise its latest
        lines."""
        if self._host is not None:
            return self._host.log()
        entries: List[Dict[str, Any]] = self.control("log", follow=False)["entries"]
        return "".join("{time} {level} {component}: {text}\n".format(**each) for each in entries)

    def record(self, file: PathLike) -> Recording:
        """Begins to record what is done to the phone, as a scenario in this new file. `clockctl` does
        it: $CLOCKCTL, else the one beside clockhost, else the one in $PATH."""
        program = clockctl_path(self._host.program if self._host else None)
        return Recording(program, *self._sockets, pathlib.Path(file), self.timeout)

    def restart(self, power_cut: bool = False) -> None:
        """Ends the host of a spawned phone, in an orderly way or by a power cut, and starts it again
        with the state that it saved. Unread events are lost, and a recording ends."""
        if self._host is None:
            raise TypeError("only a spawned phone can be restarted")
        if self._host.closed:
            raise HostGone("this phone is closed")
        self._before_end()
        self._connection.close()
        self._host.stop(power_cut)
        self._host.start_again()
        self._host.wait_until_ready(_LONGEST_START)
        self._connect()
        self._after_restart()

    def close(self) -> None:
        """Disconnects; ends the host if this phone has started it, and removes its folder. In a
        fork, only the fork is disconnected."""
        if os.getpid() == self._pid:
            self._before_end()
        self._connection.close()
        if self._host is not None:
            self._host.close()

    def fault(self) -> str:
        """Of a spawned phone that is closed: how its host failed, as with a signal or a sanitizer's exit
        status, and the end of its log; nothing if it ended well, or only by power cuts of `restart`."""
        return self._host.fault() if self._host is not None else ""

    def __repr__(self) -> str:
        return f"Phone({self._sockets[0]!r})"

    def __enter__(self) -> Phone:
        return self

    def __exit__(
        self,
        kind: Optional[Type[BaseException]],
        error: Optional[BaseException],
        trace: Optional[TracebackType],
    ) -> None:
        self.close()

    def _connect(self) -> None:
        gone: Callable[[], str] = self._host.end_text if self._host else lambda: ""
        self._connection = Connection(*self._sockets, gone)
        self.events.connect(self._connection)
        try:
            self.observe_time_events()
        except BaseException:
            self._connection.close()
            raise
