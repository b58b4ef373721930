"""What a host may do wrong ends in a clear error, and in time."""

import gc
import json
import pathlib
import threading
from typing import Iterator

import pytest
from fake_host import EVENT, FakeHost, reply

from deskclock import AlarmClock, HostGone, NoReply, Phone, PhoneError, ProtocolError, Refused
from deskclock import connection, frames
from deskclock.events import Events
from deskclock.frames import Frame, encode

VALUE = b'{"name":"getTimeVal","parameters":[{"name":"getTimeValReturn","value":%d}]}'


@pytest.fixture
def host(tmp_path_factory: pytest.TempPathFactory) -> Iterator[FakeHost]:
    host = FakeHost(tmp_path_factory.mktemp("host"))
    yield host
    host.close()


@pytest.fixture
def phone(host: FakeHost) -> Iterator[Phone]:
    with Phone.attach(host.path) as phone:
        yield phone


def test_the_first_frame_names_the_codec(host: FakeHost, phone: Phone) -> None:
    assert host.received[0] == Frame(frames.HELLO, 0, b"json")


def test_a_call_without_a_reply_ends_in_time_and_a_late_reply_is_dropped(
    host: FakeHost, phone: Phone
) -> None:
    phone.timeout = 0.01
    with pytest.raises(NoReply, match="getTimeVal: no reply within 0.01 s"):
        phone.get_time_val()
    phone.timeout = 5
    late = host.received[-1]
    host.answer = lambda frame: reply(late, VALUE % 1) + reply(frame, VALUE % 2)
    assert phone.get_time_val() == 2
    assert not phone._connection._answers


def test_a_call_that_has_no_reply_returns_when_it_is_handled(host: FakeHost, phone: Phone) -> None:
    host.answer = lambda frame: b"" if b"setTimeInt" in frame.payload else reply(frame, VALUE % 1)
    phone.set_time_int(1)
    assert b"setTimeInt" in host.received[-2].payload
    assert b"getTimeVal" in host.received[-1].payload


def test_a_control_request_without_a_reply_ends_in_time(phone: Phone) -> None:
    with pytest.raises(NoReply, match="clock: no reply within 0.01 s"):
        phone.advance("1s", timeout=0.01)


def test_a_host_that_closes_the_connection_is_gone_for_every_later_request(
    host: FakeHost, phone: Phone
) -> None:
    host.answer = lambda frame: None
    for _ in range(2):
        with pytest.raises(HostGone, match="the host has gone"):
            phone.get_time_val()
    with pytest.raises(HostGone):
        phone.status()


@pytest.mark.parametrize(
    "sent, said",
    [
        (b"\0\0\0\1", "a frame of 1 bytes"),
        (encode(Frame(9, 1, b"")), "a frame of kind 9"),
        (encode(Frame(frames.EVENT, 0, b"[" * 100_000)), "too many levels"),
        (encode(Frame(frames.EVENT, 0, b'{"name":[],"parameters":[]}')), "the name \\[\\]"),
        (encode(Frame(frames.EVENT, 0, b"x")), "Expecting value"),
        (encode(Frame(frames.EVENT, 0, b'{"name":"e","parameters":[]}')), 'unknown event "e"'),
        (
            encode(Frame(frames.EVENT, 0, b'{"name":"alarmClockEvent","parameters":[]}')),
            "alarmClockEvent has no int alarmClockEventAlarm",
        ),
    ],
)
def test_what_the_protocol_does_not_allow_ends_the_connection(
    host: FakeHost, phone: Phone, sent: bytes, said: str
) -> None:
    answers = [sent]
    host.answer = lambda frame: answers.pop()
    for _ in range(2):
        with pytest.raises(ProtocolError, match=f"the host sent .*{said}"):
            phone.get_time_val()


@pytest.mark.parametrize("payload", [b"", b"[]", VALUE.replace(b"%d", b'"1"')])
def test_a_reply_that_is_none_is_refused(host: FakeHost, phone: Phone, payload: bytes) -> None:
    host.answer = lambda frame: reply(frame, payload)
    with pytest.raises(ProtocolError):
        phone.get_time_val()


@pytest.mark.parametrize("payload", [b"", b"[]", b"{}", b"1", b"[" * 100_000])
def test_a_control_reply_that_is_none_is_refused(
    host: FakeHost, phone: Phone, payload: bytes
) -> None:
    host.answer = lambda frame: reply(frame, payload)
    with pytest.raises(ProtocolError, match="the host replied"):
        phone.status()


def test_a_refusal_has_the_reason_of_the_host(host: FakeHost, phone: Phone) -> None:
    refusal = json.dumps({"ok": False, "error": "too late"}).encode()
    host.answer = lambda frame: reply(frame, refusal)
    with pytest.raises(Refused, match="^too late$"):
        phone.status()
    # A call at a host whose call socket is not where this phone looks for it.
    host.answer = lambda frame: encode(Frame(frames.CONTROL_REPLY, frame.id, refusal))
    with pytest.raises(Refused, match="^too late$"):
        phone.get_time_val()


def test_a_host_without_room_for_a_client_says_so(host: FakeHost, phone: Phone) -> None:
    refusal = encode(Frame(frames.CONTROL_REPLY, 0, b'{"ok":false,"error":"100 clients"}'))
    host.answer = lambda frame: refusal
    with pytest.raises(Refused, match="100 clients"):
        phone.get_time_val()


def test_no_host_at_the_socket(tmp_path: pathlib.Path) -> None:
    with pytest.raises(HostGone, match="no host at .*none: No such file"):
        Phone.attach(str(tmp_path / "none"))
    with pytest.raises(HostGone, match="too long"):
        Phone.attach("x" * 200)


def test_events_that_are_not_read_are_bounded(host: FakeHost, phone: Phone) -> None:
    phone.events = Events(phone.get_time_val, most=3)
    phone.events.connect(phone._connection)
    flood = b"".join(encode(Frame(frames.EVENT, 0, EVENT % number)) for number in range(5))
    host.answer = lambda frame: flood + reply(frame, VALUE % 0)
    phone.get_time_val()
    host.answer = lambda frame: reply(frame, VALUE % 0)
    with pytest.raises(PhoneError, match="2 events were lost; at most 3 can wait"):
        next(phone.events)
    assert list(phone.events) == [AlarmClock(2), AlarmClock(3), AlarmClock(4)]


def test_events_that_the_host_sent_before_its_end_can_be_read(host: FakeHost, phone: Phone) -> None:
    host.last_words = b"".join(encode(Frame(frames.EVENT, 0, EVENT % number)) for number in range(3))
    host.answer = lambda frame: None
    assert [next(phone.events) for _ in range(3)] == [AlarmClock(0), AlarmClock(1), AlarmClock(2)]
    with pytest.raises(HostGone, match="the host has gone"):
        next(phone.events)


def test_the_end_of_one_socket_loses_no_event_at_the_other(
    host: FakeHost, phone: Phone, monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.setattr(connection, "_READ_SIZE", 64)
    events = b"".join(encode(Frame(frames.EVENT, 0, EVENT % number)) for number in range(9))
    host.answer = lambda frame: reply(frame, VALUE % 0) + events
    phone.get_time_val()
    host.answer = lambda frame: None
    with pytest.raises(HostGone):
        phone.status()
    assert [next(phone.events) for _ in range(9)][-1] == AlarmClock(8)


def test_an_infinite_timeout(host: FakeHost, phone: Phone) -> None:
    phone.timeout = float("inf")
    host.answer = lambda frame: reply(frame, VALUE % 7)
    assert phone.get_time_val() == 7


def test_paths_that_are_no_text(host: FakeHost) -> None:
    host.answer = lambda frame: reply(frame, VALUE % 7)
    with Phone.attach(pathlib.Path(host.path), pathlib.Path(host.path + ".control")) as phone:
        assert phone.get_time_val() == 7
    with pytest.raises(ValueError, match="surrogates"):
        Phone.attach("\ud800")
    gc.collect()  # a socket that is left open is told here


def test_iteration_has_the_events_that_come_before_the_reply_to_a_call(
    host: FakeHost, phone: Phone
) -> None:
    events = [b"", encode(Frame(frames.EVENT, 0, EVENT % 7))]
    host.answer = lambda frame: events.pop() + reply(frame, VALUE % 0)
    assert list(phone.events) == [AlarmClock(7)]


def test_a_thread_that_waits_reads_for_the_others(host: FakeHost, phone: Phone) -> None:
    """The control request is answered only after the calls, which another thread makes."""
    pending = []
    answered = threading.Event()

    def answer(frame: Frame) -> bytes:
        if frame.kind == frames.CONTROL_REQUEST:
            pending.append(frame)
            answered.wait(30)
            return reply(frame, b'{"ok":true}')
        return reply(frame, VALUE % 7)

    host.answer = answer
    phone.timeout = 30
    moving = threading.Thread(target=phone.status)
    moving.start()
    assert [phone.get_time_val() for _ in range(5)] == [7] * 5
    answered.set()
    moving.join(30)
    assert not moving.is_alive() and len(pending) == 1


def test_close_ends_the_wait_of_another_thread(host: FakeHost, phone: Phone) -> None:
    waiting = threading.Event()
    errors = []

    def answer(frame: Frame) -> bytes:
        waiting.set()
        return b""

    def wait() -> None:
        try:
            phone.get_time_val()
        except HostGone as error:
            errors.append(str(error))

    host.answer = answer
    thread = threading.Thread(target=wait)
    thread.start()
    assert waiting.wait(30)
    phone.close()
    thread.join(4)  # less than the timeout of the call
    assert errors == ["this phone is closed"]


def test_a_host_that_does_not_read_ends_in_time(host: FakeHost, phone: Phone) -> None:
    blocked = threading.Event()
    host.answer = lambda frame: b"" if blocked.wait(30) else None
    phone.timeout = 0.05
    with pytest.raises(NoReply):
        phone.get_time_val()
    with pytest.raises(HostGone, match="the host does not read its requests"):
        phone.set_alarm_clock("x" * 1_000_000)  # more than the socket holds
    blocked.set()


def test_a_timeout_that_is_no_number(host: FakeHost, phone: Phone) -> None:
    with pytest.raises(TypeError, match="the timeout is None; should be seconds"):
        phone.events.wait_for(AlarmClock, timeout=None)  # type: ignore[arg-type]
