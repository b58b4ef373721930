"""What the plug-in keeps of a failed test, in test runs of its own."""

import pathlib
from typing import List

import pytest
from test_pytest_plugin import scenarios_in
from test_recording import replay


def run(pytester: pytest.Pytester, test: str, *options: str) -> pytest.RunResult:
    pytester.makepyfile(test)
    return pytester.runpytest_inprocess(*options)


@pytest.mark.parametrize(
    "body", ["phone.close(); assert 0", "with phone: phone.advance('1h')\n    assert 0"]
)
def test_a_phone_that_the_test_has_closed(pytester: pytest.Pytester, body: str) -> None:
    result = run(pytester, f"def test_one(phone):\n    {body}\ndef test_two(phone): pass")
    result.assert_outcomes(failed=1, passed=1)
    result.stdout.fnmatch_lines(["*phone-1 log: *", "*shutting down*", "*phone-1 scenario: *"])


@pytest.mark.parametrize("options", [[], ["--phone-artifacts=kept"]])
def test_a_test_with_a_long_name(pytester: pytest.Pytester, options: List[str]) -> None:
    test = """
        import pytest
        @pytest.mark.parametrize("text", ["x" * 300])
        def test(phone, text): assert 0
    """
    result = run(pytester, test, *options)
    result.assert_outcomes(failed=1)
    result.stdout.fnmatch_lines(["*phone-1 scenario: clockhost --scenario *"])


def test_artifacts_that_cannot_be_kept(pytester: pytest.Pytester) -> None:
    pytester.makefile("", kept="a file")
    result = run(pytester, "def test(phone): assert 0\ndef test_b(): pass", "--phone-artifacts=kept")
    result.assert_outcomes(failed=1, passed=1)
    result.stdout.fnmatch_lines(["*the files below cannot be kept: *kept*", "*phone-1 scenario -*"])


def test_evidence_that_fails_does_not_end_the_run(pytester: pytest.Pytester) -> None:
    test = """
        def test(phone):
            phone.log = None
            assert 0
        def test_two(phone): pass
    """
    result = run(pytester, test)
    result.assert_outcomes(failed=1, passed=1)
    result.stdout.fnmatch_lines(["no logs: TypeError*"])


def test_another_encoding(pytester: pytest.Pytester, monkeypatch: pytest.MonkeyPatch) -> None:
    for name, value in {"PYTHONUTF8": "0", "PYTHONCOERCECLOCALE": "0", "LC_ALL": "C"}.items():
        monkeypatch.setenv(name, value)
    pytester.makepyfile("def test(phone):\n    phone.keys['sntp-addr'] = 'z\\u00fcrich'\n    assert 0")
    result = pytester.runpytest_subprocess("--phone-artifacts=kept")
    result.assert_outcomes(failed=1)
    (scenario,) = pytester.path.glob("kept/*/*.scenario")
    assert "z\u00fcrich" in scenario.read_text(encoding="utf-8")


def test_a_teardown_that_fails(pytester: pytest.Pytester) -> None:
    test = """
        import pytest

        @pytest.fixture
        def checked(phone):
            yield phone
            assert phone.get_date() == ""

        def test(checked):
            checked.keys["date-format"] = 2
    """
    result = run(pytester, test)
    result.assert_outcomes(passed=1, errors=1)
    (scenario,) = scenarios_in(result.outlines)
    assert "set date-format 2" in scenario.read_text(encoding="utf-8")


def test_a_restart_begins_a_second_scenario(pytester: pytest.Pytester) -> None:
    test = """
        def test(phone):
            phone.keys["date-format"] = 2
            phone.restart(power_cut=True)
            phone.advance("2h")
            phone.get_date()
            assert 0
    """
    result = run(pytester, test, "--phone-artifacts=kept")
    result.assert_outcomes(failed=1)
    first, second = scenarios_in(result.outlines)
    assert (first.name, second.name) == ("phone-1.scenario", "phone-1-run-2.scenario")
    assert "set date-format 2" in first.read_text() and "not complete" not in first.read_text()
    assert "clock advance" in second.read_text() and "expect call getDate" in second.read_text()
    for scenario in (first, second):
        assert replay(scenario).returncode == 0


def test_phones_of_a_fleet(pytester: pytest.Pytester) -> None:
    test = """
        def test(new_fleet):
            phones = new_fleet(3, variant=3)
            phones[2].keys["date-format"] = 1
            assert phones.each(lambda phone: phone.get_date()) == []
    """
    result = run(pytester, test)
    result.assert_outcomes(failed=1)
    scenarios = scenarios_in(result.outlines)
    assert [file.stem for file in scenarios] == ["phone-1", "phone-2", "phone-3"]
    assert ["set date-format 1" in file.read_text() for file in scenarios] == [False, False, True]


def test_names_that_differ_in_a_mark_do_not_share_a_folder(pytester: pytest.Pytester) -> None:
    test = """
        import pytest
        @pytest.mark.parametrize("text", ["a b", "a-b"])
        def test(phone, text): assert 0
    """
    run(pytester, test, "--phone-artifacts=kept").assert_outcomes(failed=2)
    assert len(list(pytester.path.joinpath("kept").iterdir())) == 2


def test_a_host_that_crashes_fails_the_test(pytester: pytest.Pytester) -> None:
    test = """
        import os, signal
        def test(phone, new_phone):
            os.kill(phone._host._processes[-1].pid, signal.SIGSEGV)
        def test_well(phone):
            phone.restart(power_cut=True)
            phone.restart()
    """
    result = run(pytester, test)
    result.assert_outcomes(passed=2, errors=1)
    result.stdout.fnmatch_lines(["phone-1: the host ended with signal 11; the end of its log:"])
    assert len(scenarios_in(result.outlines)) == 1


def test_a_host_that_ends_with_an_error_fails_the_test(
    pytester: pytest.Pytester, tmp_path: pathlib.Path
) -> None:
    """As under a sanitizer, which reports at the end; and clockctl is not beside this program."""
    program = tmp_path / "host"
    program.write_text('#!/bin/sh\ntrap "" TERM\n"$REAL" "$@" &\nhost=$!\ntrap "kill $host; wait $host; exit 66" TERM\nwait $host\n')
    program.chmod(0o700)
    test = f"""
        import os
        def test(new_phone, monkeypatch):
            host = os.environ["CLOCKHOST"]
            monkeypatch.setenv("REAL", host)
            monkeypatch.setenv("CLOCKCTL", os.path.join(os.path.dirname(host), "clockctl"))
            new_phone(program={str(program)!r})
    """
    result = run(pytester, test)
    result.assert_outcomes(passed=1, errors=1)
    result.stdout.fnmatch_lines(["phone-1: the host ended with exit status 66; *"])
    assert "not recorded" not in result.stdout.str() and scenarios_in(result.outlines)


def test_a_phone_that_cannot_be_recorded_is_usable(
    pytester: pytest.Pytester, monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.setenv("CLOCKCTL", "no-clockctl")
    result = run(pytester, "def test(phone):\n    phone.get_time()\n    assert 0")
    result.assert_outcomes(failed=1)
    result.stdout.fnmatch_lines(['# no program "no-clockctl"; install it, or name it with $CLOCKCTL'])


def test_a_marker_takes_names(pytester: pytest.Pytester) -> None:
    result = run(pytester, "import pytest\n@pytest.mark.phone(3)\ndef test(phone): pass")
    result.assert_outcomes(errors=1)
    result.stdout.fnmatch_lines(["*the marker phone takes options by name, as variant=3; not (3,)"])
