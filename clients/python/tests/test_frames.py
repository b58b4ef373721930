import pytest

from deskclock.frames import LONGEST, Frame, FrameReader, encode

FRAMES = [Frame(0, 0, b"json"), Frame(2, 2**32 - 1, b""), Frame(3, 7, b"x" * 300)]
STREAM = b"".join(encode(frame) for frame in FRAMES)


def test_a_frame_is_as_the_protocol_says() -> None:
    assert encode(Frame(1, 0x01020304, b"ab")) == b"\0\0\0\7" b"\1" b"\1\2\3\4" b"ab"


@pytest.mark.parametrize("size", [1, 2, 3, 5, 9, 10, 1000])
def test_frames_are_read_however_the_stream_is_cut(size: int) -> None:
    reader = FrameReader()
    pieces = [STREAM[at : at + size] for at in range(0, len(STREAM), size)]
    assert [frame for piece in pieces for frame in reader.feed(piece)] == FRAMES


def test_the_longest_frame_is_read_and_a_longer_one_is_neither_sent_nor_read() -> None:
    longest = Frame(1, 1, b"x" * (LONGEST - 5))
    assert FrameReader().feed(encode(longest)) == [longest]
    with pytest.raises(ValueError, match="too long; it may have 1048576"):
        encode(Frame(1, 1, b"x" * (LONGEST - 4)))
    with pytest.raises(ValueError, match="a frame of 1048577 bytes"):
        FrameReader().feed((LONGEST + 1).to_bytes(4, "big"))


def test_a_frame_shorter_than_its_head_is_refused() -> None:
    with pytest.raises(ValueError, match="a frame of 4 bytes"):
        FrameReader().feed(b"\0\0\0\4")
