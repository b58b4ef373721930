"""Frames: what both sockets of a host carry."""

import struct
from typing import List, NamedTuple

HELLO, CALL, REPLY, EVENT, CONTROL_REQUEST, CONTROL_REPLY, CONTROL_ITEM = range(7)

LONGEST = 1024 * 1024  # bytes: what follows the length of a frame

_LENGTH = struct.Struct(">I")
_HEAD = struct.Struct(">BI")


class Frame(NamedTuple):
    kind: int
    id: int  # 0 to 2**32 - 1; an answer has that of its request, an event 0
    payload: bytes


def encode(frame: Frame) -> bytes:
    size = _HEAD.size + len(frame.payload)
    if size > LONGEST:
        raise ValueError(f"a request of {size} bytes is too long; it may have {LONGEST}")
    return _LENGTH.pack(size) + _HEAD.pack(frame.kind, frame.id) + frame.payload


class FrameReader:
    """Cuts a stream of bytes into frames. Raises ValueError for a length that no frame has."""

    def __init__(self) -> None:
        self._bytes = bytearray()

    def feed(self, received: bytes) -> List[Frame]:
        self._bytes += received
        frames = []
        start = 0
        while len(self._bytes) - start >= _LENGTH.size:
            (size,) = _LENGTH.unpack_from(self._bytes, start)
            if not _HEAD.size <= size <= LONGEST:
                raise ValueError(f"a frame of {size} bytes")
            begin, end = start + _LENGTH.size, start + _LENGTH.size + size
            if len(self._bytes) < end:
                break
            kind, number = _HEAD.unpack_from(self._bytes, begin)
            frames.append(Frame(kind, number, bytes(self._bytes[begin + _HEAD.size : end])))
            start = end
        del self._bytes[:start]
        return frames
