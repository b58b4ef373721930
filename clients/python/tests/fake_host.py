"""A host that answers as a test says: with what no real host sends, or not at all."""

import contextlib
import pathlib
import socket
import threading
from typing import Callable, List, Optional

from deskclock import frames
from deskclock.frames import Frame, FrameReader

TRUE = b'{"name":"observeTimeEvents","parameters":[{"name":"observeTimeEventsReturn","value":true}]}'
EVENT = b'{"name":"alarmClockEvent","parameters":[{"name":"alarmClockEventAlarm","value":%d}]}'


class FakeHost:
    """The first call, that of the registration, is always answered. `answer` gets each later request,
    and returns the bytes to send; None ends the connection."""

    def __init__(self, folder: pathlib.Path) -> None:
        self.path = str(folder / "sock")
        self.answer: Callable[[Frame], Optional[bytes]] = lambda frame: b""
        self.last_words = b""  # sent before the connection ends
        self.received: List[Frame] = []
        self._registered = False
        self._listeners: List[socket.socket] = []
        for path in (self.path, self.path + ".control"):
            listener = socket.socket(socket.AF_UNIX)
            self._listeners.append(listener)
            listener.bind(path)
            listener.listen()
            threading.Thread(target=self._serve, args=[listener], daemon=True).start()

    def close(self) -> None:
        for listener in self._listeners:
            listener.close()

    def _serve(self, listener: socket.socket) -> None:
        with contextlib.suppress(OSError), listener.accept()[0] as client:
            reader = FrameReader()
            while received := client.recv(4096):
                for frame in reader.feed(received):
                    self.received.append(frame)
                    answer = self._answer(frame)
                    if answer is None:
                        client.sendall(self.last_words)
                        return
                    client.sendall(answer)

    def _answer(self, frame: Frame) -> Optional[bytes]:
        if frame.kind == frames.HELLO:
            return b""
        if frame.kind == frames.CALL and not self._registered:
            self._registered = True
            return reply(frame, TRUE)
        return self.answer(frame)


def reply(to: Frame, payload: bytes) -> bytes:
    return frames.encode(Frame(to.kind + 1, to.id, payload))
