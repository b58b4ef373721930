"""The two kinds of requests: remote calls and control requests."""

from __future__ import annotations

from typing import Any, Dict, Optional

from .connection import Connection
from .errors import NoReply, ProtocolError
from .methods import METHODS, Value, decode_method, encode_call


class Requests:
    timeout: float  # seconds of real time that a request waits for its answer
    _connection: Connection

    def call(self, method: str, **parameters: Value) -> Dict[str, Value]:
        """Calls a remote method, by the names of the protocol: the parameters of its reply. Raises
        KeyError for an unknown method, TypeError and ValueError for parameters that it does not take."""
        payload = encode_call(method, parameters)
        if not METHODS[method].has_reply:
            self._connection.send(payload, self.timeout)
            return {}
        try:
            reply = self._connection.call(payload, self.timeout)
        except NoReply as error:
            raise NoReply(f"{method}: {error}") from None
        try:
            return decode_method(reply)[1]
        except ValueError as error:
            raise ProtocolError(f"the host sent {error}") from None

    def control(
        self, verb: str, timeout: Optional[float] = None, **members: Any
    ) -> Dict[str, Any]:
        """Sends a control request: the members of its reply. Raises Refused with the host's reason.
        timeout: seconds, if not that of the phone."""
        request = {"verb": verb, **members}
        try:
            return self._connection.control(request, self.timeout if timeout is None else timeout)
        except NoReply as error:
            raise NoReply(f"{verb}: {error}") from None
