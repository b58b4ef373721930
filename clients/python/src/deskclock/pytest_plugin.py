"""A pytest plug-in: telephones as fixtures. The report of a failed test has the phones' logs, and what
was done to them as scenarios."""

from __future__ import annotations

import contextlib
import pathlib
import re
import tempfile
from typing import Any, Callable, Dict, Generator, Iterator, List

import pytest

from .errors import PhoneError
from .phone import Phone
from .recording import Recording

_MOST_LINES = 60  # of a log or scenario in the report; the files have all of them


class _Evidence:
    """The phones of one running test, and their recordings."""

    def __init__(self, make_folder: Callable[[], pathlib.Path]) -> None:
        self._make_folder = make_folder
        self._phones: List[Phone] = []
        self._recordings: List[Recording] = []

    def add(self, phone: Phone, recording: Recording) -> None:
        self._phones.append(phone)
        self._recordings.append(recording)

    def __len__(self) -> int:
        return len(self._phones)

    def keep(self) -> Dict[str, str]:
        """Ends the recordings, and writes the files: the sections of the report."""
        sections: Dict[str, str] = {}
        folder = self._make_folder()
        for number, (phone, recording) in enumerate(zip(self._phones, self._recordings), start=1):
            name = f"phone-{number}"
            log, scenario = folder / f"{name}.log", folder / f"{name}.scenario"
            log.write_text(phone.log())
            scenario.write_text(_ended(recording))
            sections[f"{name} log: {log}"] = _last_lines(log)
            sections[f"{name} scenario: clockhost --scenario {scenario}"] = _last_lines(scenario)
        self._phones.clear()
        return sections


_EVIDENCE = pytest.StashKey[_Evidence]()


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
        options.update(marker.kwargs)
    return new_phone(**options)


@pytest.fixture
def new_phone(
    request: pytest.FixtureRequest, tmp_path_factory: pytest.TempPathFactory
) -> Iterator[Callable[..., Phone]]:
    """Makes a phone on each call, with these options of Phone.spawn."""
    evidence = _Evidence(lambda: _folder_for(request, tmp_path_factory))
    request.node.stash[_EVIDENCE] = evidence
    with contextlib.ExitStack() as ending:
        folder = pathlib.Path(ending.enter_context(tempfile.TemporaryDirectory()))

        def make(**options: Any) -> Phone:
            phone = ending.enter_context(Phone.spawn(**options))
            recording = phone.record(folder / f"{len(evidence)}.scenario")
            ending.callback(recording.close)
            evidence.add(phone, recording)
            return phone

        yield make
    del request.node.stash[_EVIDENCE]


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item: pytest.Item) -> Generator[None, Any, None]:
    outcome = yield
    report: pytest.TestReport = outcome.get_result()
    if report.failed and _EVIDENCE in item.stash:
        report.sections += item.stash[_EVIDENCE].keep().items()


def _folder_for(request: pytest.FixtureRequest, factory: pytest.TempPathFactory) -> pathlib.Path:
    parent = request.config.getoption("--phone-artifacts")
    if parent is None:
        return factory.mktemp(re.sub(r"\W+", "-", request.node.name))
    folder: pathlib.Path = parent / re.sub(r"\W+", "-", request.node.nodeid)
    folder.mkdir(parents=True, exist_ok=True)
    return folder.resolve()


def _ended(recording: Recording) -> str:
    try:
        return recording.stop()
    except PhoneError as error:  # the host has died; the scenario ends there
        return f"{recording.file.read_text()}# {error}\n"


def _last_lines(file: pathlib.Path) -> str:
    return "\n".join(file.read_text().splitlines()[-_MOST_LINES:])
