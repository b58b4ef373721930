"""Many telephones that are driven together."""

from __future__ import annotations

import concurrent.futures
from types import TracebackType
from typing import TYPE_CHECKING, Callable, List, Optional, Sequence, Type, TypeVar, overload

from .errors import HostGone

if TYPE_CHECKING:
    from .phone import Phone

R = TypeVar("R")


class Fleet(Sequence["Phone"]):
    """A sequence of phones, which start, act and are closed together. Use it in a `with`."""

    def __init__(self, spawn: Callable[[], Phone], count: int) -> None:
        if count < 0:
            raise ValueError(f"a fleet of {count} phones; should be 0 or more")
        self._closed = False
        self._pool = concurrent.futures.ThreadPoolExecutor(max(count, 1))
        starts = [self._pool.submit(spawn) for _ in range(count)]
        concurrent.futures.wait(starts)
        self._phones = [start.result() for start in starts if start.exception() is None]
        if len(self._phones) < count:
            self.close()
            _results(starts)

    def each(self, action: Callable[[Phone], R]) -> List[R]:
        """Calls this for all phones at the same time: the results in the order of the phones. After
        all have ended, raises the error of the first phone that has one."""
        if self._closed:
            raise HostGone("this fleet is closed")
        return _results([self._pool.submit(action, phone) for phone in self._phones])

    def close(self) -> None:
        """Closes all phones."""
        if not self._closed:
            try:
                self.each(lambda phone: phone.close())
            finally:
                self._closed = True
                self._pool.shutdown()

    @overload
    def __getitem__(self, index: int) -> Phone: ...

    @overload
    def __getitem__(self, index: slice) -> Sequence[Phone]: ...

    def __getitem__(self, index: int | slice) -> Phone | Sequence[Phone]:
        return self._phones[index]

    def __len__(self) -> int:
        return len(self._phones)

    def __enter__(self) -> Fleet:
        return self

    def __exit__(
        self,
        kind: Optional[Type[BaseException]],
        error: Optional[BaseException],
        trace: Optional[TracebackType],
    ) -> None:
        self.close()


def _results(futures: Sequence[concurrent.futures.Future[R]]) -> List[R]:
    concurrent.futures.wait(futures)
    return [future.result() for future in futures]
