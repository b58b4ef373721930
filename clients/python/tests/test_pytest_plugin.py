"""The plug-in, in test runs of its own."""

import pathlib
import re
from typing import List

import pytest
from test_recording import replay

FAILING = """
import pytest

@pytest.mark.phone(at="2026-12-31T22:59:50Z")
def test_new_year(phone, new_phone):
    while "listening" not in phone.log():
        phone.get_time()
    phone.keys["sntp-tz-offset"] = 1
    phone.advance("10s")
    assert new_phone(variant=3).get_date() == phone.get_date()
"""


def scenarios_in(lines: List[str]) -> List[pathlib.Path]:
    found = re.findall(r"clockhost --scenario (\S+)", "\n".join(lines))
    return [pathlib.Path(name) for name in found if name != "FILE"]


def test_a_failed_test_shows_log_and_scenario_of_its_phones(pytester: pytest.Pytester) -> None:
    pytester.makepyfile(FAILING)
    result = pytester.runpytest()
    result.assert_outcomes(failed=1)
    result.stdout.fnmatch_lines(
        [
            "*phone-1 log: *",
            "2026-12-31T22:59:50Z * listening *",
            "*phone-1 scenario: clockhost --scenario *",
            "expect event dateChangeEvent *Day=1 *Month=1 *Year=2027",
            "expect call getDate getDateStringReturn=01.01.27*",
            "*phone-2 log: *",
            "*phone-2 scenario: *",
            "expect call getDate getDateStringReturn=06/16/16*",
        ]
    )
    scenarios = scenarios_in(result.outlines)
    assert len(scenarios) == 2
    for scenario in scenarios:
        outcome = replay(scenario)
        assert outcome.returncode == 0, outcome.stderr


def test_a_test_that_passes_shows_and_keeps_nothing(pytester: pytest.Pytester) -> None:
    pytester.makepyfile("def test(phone): assert phone.get_time() == '00:00'")
    result = pytester.runpytest("-rA", "--phone-artifacts=kept")
    result.assert_outcomes(passed=1)
    result.stdout.no_fnmatch_line("*scenario*")
    assert not pytester.path.joinpath("kept").exists()


def test_artifacts_are_kept_where_the_option_says(pytester: pytest.Pytester) -> None:
    pytester.makepyfile(test_a=FAILING)
    pytester.runpytest("--phone-artifacts=kept").assert_outcomes(failed=1)
    (folder,) = pytester.path.joinpath("kept").iterdir()
    assert folder.name == "test_a-py-test_new_year"
    names = sorted(file.name for file in folder.iterdir())
    assert names == ["phone-1.log", "phone-1.scenario", "phone-2.log", "phone-2.scenario"]


def test_a_host_that_dies_in_a_test(pytester: pytest.Pytester) -> None:
    pytester.makepyfile(
        """
        def test(phone):
            phone.keys["date-format"] = 2
            phone._host.stop(power_cut=True)
            phone.get_date()
        """
    )
    result = pytester.runpytest()
    result.assert_outcomes(failed=1)
    result.stdout.fnmatch_lines(["*HostGone: *signal 9*", "set date-format 2*", "# the recording*"])
    (scenario,) = scenarios_in(result.outlines)
    assert replay(scenario).returncode == 0


def test_a_setup_that_fails_after_the_phone_shows_it(pytester: pytest.Pytester) -> None:
    pytester.makepyfile(
        """
        import pytest

        @pytest.fixture
        def european(phone):
            phone.keys["daylight-save-zone-id"] = 99

        def test(european): pass
        """
    )
    result = pytester.runpytest()
    result.assert_outcomes(errors=1)
    result.stdout.fnmatch_lines(["*Refused*", "*phone-1 scenario: *"])


def test_variants_and_options_are_parameters(pytester: pytest.Pytester) -> None:
    pytester.makepyfile(
        """
        import deskclock, pytest

        pytestmark = pytest.mark.phone(network="up", mac="000000000001")

        @pytest.mark.parametrize("phone_variant", deskclock.VARIANTS)
        def test_variant(phone, phone_variant):
            status = phone.status()
            assert (status["variant"], status["network"]) == (phone_variant, "up")

        @pytest.mark.parametrize("phone_options", [{"at": 86400}, {"software_type": "x"}])
        @pytest.mark.phone(mac="000000000002")
        def test_options(phone, phone_options):
            status = phone.status()
            assert status["mac"] == "000000000002"
            assert (status["softwareType"] == "x") == ("software_type" in phone_options)
        """
    )
    pytester.runpytest("--strict-markers").assert_outcomes(passed=6)
