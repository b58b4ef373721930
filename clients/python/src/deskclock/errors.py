"""What can go wrong with a telephone. All of these are a PhoneError."""


class PhoneError(Exception):
    """Base of all errors of this package, and itself raised for what has no class of its own."""


class Refused(PhoneError):
    """The host or the service refused a request. Nothing was changed; the phone remains usable."""


class NoReply(PhoneError):
    """No reply or event came in time. The phone remains usable; a late reply is dropped."""


class HostGone(PhoneError):
    """There is no host: it could not be started, it has ended, or this phone was closed."""


class ProtocolError(PhoneError):
    """The host sent what the protocol does not allow. If that was not the content of a reply, the
    connection is closed."""
