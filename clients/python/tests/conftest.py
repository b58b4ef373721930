import pathlib
from typing import Iterator

import pytest

from deskclock import Phone

pytest_plugins = ["pytester"]

TREE = pathlib.Path(__file__).parents[3]


@pytest.fixture(scope="session")
def protocol_page() -> str:
    return (TREE / "docs/reference/remote-protocol.md").read_text()


@pytest.fixture(scope="module")
def idle_phone() -> Iterator[Phone]:
    """For tests that change nothing. It starts a minute before the end of winter in New York."""
    with Phone.spawn(at="2026-03-08T06:59:00Z", variant=3) as phone:
        phone.keys["sntp-tz-offset"] = -5
        phone.advance("1s")
        phone.events.clear()
        yield phone
