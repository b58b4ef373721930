"""A pytest plug-in: telephones as fixtures. The report of a failed test has the phones' logs, and what
was done to them as scenarios."""

from __future__ import annotations

import contextlib
import pathlib
import re
import zlib
from typing import Any, Callable, Dict, Generator, Iterator

import pytest

from .evidence import Evidence
from .fleet import Fleet
from .phone import Phone

_LONGEST_NAME = 100  # characters of a folder's name; a file system takes 255 bytes

_EVIDENCE = pytest.StashKey[Evidence]()


def pytest_addoption(parser: pytest.Parser) -> None:
    parser.getgroup("deskclock").addoption(
        "--phone-artifacts",
        metavar="DIR",
        type=pathlib.Path,
        help="where to keep logs and scenarios of failed tests (a temporary folder)",
    )


def pytest_configure(config: pytest.Config) -> None:
    config.addinivalue_line(
        "markers", "phone(**options): options of deskclock.Phone.spawn for the fixture phone"
    )


@pytest.fixture
def phone_variant() -> int:
    """The hardware variant of `phone`. To test several, parametrise it:
    `@pytest.mark.parametrize("phone_variant", deskclock.VARIANTS)`."""
    return 0


@pytest.fixture
def phone_options() -> Dict[str, Any]:
    """Further options of Phone.spawn for `phone`: override or parametrise it."""
    return {}


@pytest.fixture
def phone(
    request: pytest.FixtureRequest,
    new_phone: Callable[..., Phone],
    phone_variant: int,
    phone_options: Dict[str, Any],
) -> Phone:
    """A new phone, whose clock is paused. The marker `phone` sets its options."""
    options = {"variant": phone_variant, **phone_options}
    for marker in reversed(list(request.node.iter_markers("phone"))):
        if marker.args:
            raise TypeError(f"the marker phone takes options by name, as variant=3; not {marker.args}")
        options.update(marker.kwargs)
    return new_phone(**options)


@pytest.fixture
def new_phone(_phones: _Phones) -> Callable[..., Phone]:
    """Makes a phone on each call, with these options of Phone.spawn."""
    return _phones.spawn


@pytest.fixture
def new_fleet(_phones: _Phones) -> Callable[..., Fleet]:
    """Makes a fleet on each call, with these arguments of Phone.fleet."""
    return _phones.fleet


@pytest.fixture
def _phones(
    request: pytest.FixtureRequest, tmp_path_factory: pytest.TempPathFactory
) -> Iterator[_Phones]:
    evidence = Evidence(lambda: _folder_for(request, tmp_path_factory))
    request.node.stash[_EVIDENCE] = evidence  # until the report of the teardown is made
    with contextlib.ExitStack() as ending:
        yield _Phones(evidence, ending)
    if faults := evidence.faults():
        pytest.fail("\n".join(faults), pytrace=False)


class _Phones:
    """Starts the phones of a test, and records them."""

    def __init__(self, evidence: Evidence, ending: contextlib.ExitStack) -> None:
        self._evidence = evidence
        self._ending = ending

    def spawn(self, **options: Any) -> Phone:
        phone = self._ending.enter_context(Phone.spawn(**options))
        self._evidence.add(phone).begin()
        return phone

    def fleet(self, count: int, **options: Any) -> Fleet:
        fleet = self._ending.enter_context(Phone.fleet(count, **options))
        kept = {phone: self._evidence.add(phone) for phone in fleet}
        fleet.each(lambda phone: kept[phone].begin())
        return fleet


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item: pytest.Item) -> Generator[None, Any, None]:
    outcome = yield
    report: pytest.TestReport = outcome.get_result()
    evidence = item.stash.get(_EVIDENCE, None)
    if evidence is None:
        return
    if report.failed:
        try:
            report.sections += evidence.sections()
        except Exception as error:  # it would end the whole run
            report.sections.append(("phones", f"no logs: {error!r}"))
    if report.when == "teardown":
        del item.stash[_EVIDENCE]
        evidence.close()


def _folder_for(request: pytest.FixtureRequest, factory: pytest.TempPathFactory) -> pathlib.Path:
    parent = request.config.getoption("--phone-artifacts")
    if parent is None:
        return factory.mktemp(_name_for(request.node.name))
    folder: pathlib.Path = parent / _name_for(request.node.nodeid)
    folder.mkdir(parents=True, exist_ok=True)
    return folder.resolve()


def _name_for(test: str) -> str:
    """The number tells apart parametrised tests whose names become the same."""
    name = re.sub(r"\W+", "-", test, flags=re.ASCII)
    if "[" in test or len(name) > _LONGEST_NAME:
        name = f"{name[:_LONGEST_NAME].strip('-')}-{zlib.crc32(test.encode(errors='replace')):08x}"
    return name
