"""The two sockets of a host."""

from __future__ import annotations

import contextlib
import json
import os
import select
import socket
import threading
import time
from typing import Any, Callable, Dict, Optional, TypeVar

from . import frames
from .errors import HostGone, NoReply, PhoneError, ProtocolError, Refused
from .frames import Frame, FrameReader
from .methods import encode_json

T = TypeVar("T")

_READ_SIZE = 64 * 1024  # bytes
_LONGEST_CONNECT = 5.0  # seconds
_LONGEST_WAIT = 3600.0  # seconds: the system's calls do not take every number


class _Socket:
    """One of the sockets, and what came of its next frame."""

    def __init__(self, path: str) -> None:
        self.path = path
        self.reader = FrameReader()
        self.sending = threading.Lock()
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self.socket.settimeout(_LONGEST_CONNECT)
        try:
            self.socket.connect(path)
        except OSError as error:
            self.socket.close()
            raise HostGone(f"no host at {path}: {error.strerror or error}") from None
        except BaseException:
            self.socket.close()
            raise
        self.socket.setblocking(False)


class Connection:
    """Sends requests and receives answers and events, at both sockets of a host.

    Any thread may use it. There is no thread of its own: of the threads that wait, one reads for
    all. So a thread that waits for a long move of the clock also takes in the events, and the host
    does not drop this client for leaving them unread.
    """

    def __init__(self, calls: str, control: str, gone: Callable[[], str] = lambda: "") -> None:
        """calls, control: paths of the sockets. gone: says why the host has ended, if known."""
        self.on_event: Callable[[bytes], None] = lambda payload: None  # called with the lock held
        self._gone = gone
        self._pid = os.getpid()
        self._changed = threading.Condition()
        self._reading = False  # a thread waits at the sockets
        self._last_id = 0
        self._answers: Dict[int, Optional[Frame]] = {}  # of the requests that wait for one
        self._fault: Optional[PhoneError] = None  # why there is no connection any more
        self._calls = _Socket(calls)
        try:
            self._control = _Socket(control)
        except PhoneError:
            self._calls.socket.close()
            raise
        self._sockets = {each.socket.fileno(): each for each in (self._calls, self._control)}
        self._poll = select.poll()
        for descriptor in self._sockets:
            self._poll.register(descriptor, select.POLLIN)
        self._send(self._calls, Frame(frames.HELLO, 0, b"json"), _deadline(1))

    def call(self, method: bytes, timeout: float) -> bytes:
        """The reply to an encoded call. timeout: seconds."""
        return self._request(self._calls, frames.CALL, method, timeout).payload

    def send(self, method: bytes, timeout: float) -> None:
        """A call without a reply."""
        self._send(self._calls, Frame(frames.CALL, self._next_id(), method), _deadline(timeout))

    def control(self, request: Dict[str, Any], timeout: float) -> Dict[str, Any]:
        """The reply to a control request. timeout: seconds."""
        text = encode_json(request)
        answer = self._request(self._control, frames.CONTROL_REQUEST, text, timeout)
        return _reply_of(answer.payload)

    def wait(self, done: Callable[[], Optional[T]], timeout: float) -> Optional[T]:
        """Receives until `done`, which is called with the lock held, returns a value other than None.
        Returns None after `timeout` seconds, which may be infinite."""
        deadline = _deadline(timeout)
        with self._changed:
            while (result := done()) is None:
                self._check()
                left = deadline - time.monotonic()
                if left <= 0:
                    break
                if self._reading:
                    self._changed.wait(min(left, _LONGEST_WAIT))
                else:
                    self._receive(min(left, _LONGEST_WAIT))
            return result

    def close(self) -> None:
        with self._changed:
            self._end(HostGone("this phone is closed"))

    def _next_id(self) -> int:
        with self._changed:
            self._last_id = self._last_id % 0xFFFFFFFF + 1
            return self._last_id

    def _request(self, to: _Socket, kind: int, payload: bytes, timeout: float) -> Frame:
        number = self._next_id()
        self._answers[number] = None
        try:
            self._send(to, Frame(kind, number, payload), _deadline(timeout))
            answer = self.wait(lambda: self._answers[number], timeout)
        finally:
            del self._answers[number]
        if answer is None:
            raise NoReply(f"no reply within {timeout:g} s")
        if answer.kind != kind + 1:  # the host refuses to take it at this socket
            _reply_of(answer.payload)
        return answer

    def _send(self, to: _Socket, frame: Frame, deadline: float) -> None:
        rest = memoryview(frames.encode(frame))
        with to.sending:
            while rest:
                self._check()
                try:
                    rest = rest[to.socket.send(rest) :]
                except BlockingIOError:
                    self._wait_for_room(to, deadline)
                except OSError:
                    self._end_received()

    def _wait_for_room(self, to: _Socket, deadline: float) -> None:
        poll = select.poll()
        poll.register(to.socket, select.POLLOUT)
        if not poll.poll(max(0, deadline - time.monotonic()) * 1000):
            with self._changed:  # half a frame may be sent
                self._end(HostGone("the host does not read its requests; the connection is closed"))

    def _check(self) -> None:
        if self._fault is not None:
            raise type(self._fault)(str(self._fault))  # a new one for each thread

    def _end_received(self) -> None:
        """After a failed send: what the host sent before may say why it has gone."""
        if self.wait(lambda: self._fault, 1) is None:
            with self._changed:
                self._end(HostGone(f"the host has gone{self._gone()}"))

    # All below runs with the lock held.

    def _receive(self, timeout: float) -> None:
        """Waits at the sockets, without the lock, and takes in what came."""
        self._reading = True
        self._changed.release()
        try:
            ready = self._poll.poll(timeout * 1000)
        finally:
            self._changed.acquire()
            self._reading = False
            self._changed.notify_all()
        for descriptor, _ in ready:
            if self._fault is None:
                self._receive_from(self._sockets[descriptor])

    def _receive_from(self, source: _Socket) -> bool:
        """False if nothing was there to be read."""
        try:
            received = source.socket.recv(_READ_SIZE)
        except (BlockingIOError, InterruptedError):
            return False
        except OSError:
            received = b""
        if received:
            self._take_all(source, received)
        elif source is self._control:  # the events that the host sent last can still be read
            while self._fault is None and self._receive_from(self._calls):
                pass
        if not received and self._fault is None:
            self._end(HostGone(f"the host has gone{self._gone()}"))
        return True

    def _take_all(self, source: _Socket, received: bytes) -> None:
        try:
            for frame in source.reader.feed(received):
                self._take(frame)
        except (ValueError, UnicodeError) as error:
            self._end(ProtocolError(f"the host sent {error}"))

    def _take(self, frame: Frame) -> None:
        if frame.kind == frames.EVENT:
            self.on_event(frame.payload)
        elif frame.kind == frames.CONTROL_REPLY and frame.id == 0:  # no room for this client
            self._end(_fault_of(frame.payload))
        elif frame.kind in (frames.REPLY, frames.CONTROL_REPLY):
            if frame.id in self._answers:  # otherwise the answer comes after its timeout
                self._answers[frame.id] = frame
        elif frame.kind != frames.CONTROL_ITEM:
            raise ValueError(f"a frame of kind {frame.kind}")

    def _end(self, fault: PhoneError) -> None:
        if self._fault is not None:
            return
        self._fault = fault
        for each in self._sockets.values():
            if os.getpid() == self._pid:  # in a fork, it would also end the parent's connection
                with contextlib.suppress(OSError):  # the host has closed it
                    each.socket.shutdown(socket.SHUT_RDWR)  # wakes the thread that waits there
            each.socket.close()
        self._changed.notify_all()


def _deadline(timeout: float) -> float:
    if not isinstance(timeout, (int, float)):
        raise TypeError(f"the timeout is {timeout!r}; should be seconds, such as 2.5 or math.inf")
    return time.monotonic() + timeout


def _reply_of(payload: bytes) -> Dict[str, Any]:
    try:
        reply: Dict[str, Any] = json.loads(payload)
        if reply["ok"]:
            return reply
    except (ValueError, TypeError, KeyError, RecursionError):
        raise ProtocolError(f"the host replied {payload[:200]!r}") from None
    raise Refused(str(reply.get("error", reply)))


def _fault_of(payload: bytes) -> PhoneError:
    try:
        _reply_of(payload)
    except PhoneError as error:
        return error
    return ProtocolError(f"the host replied {payload[:200]!r} to no request")
