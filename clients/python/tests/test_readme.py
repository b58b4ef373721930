"""The tests in the documents, as a reader runs them."""

import re

import pytest
from conftest import TREE


@pytest.mark.parametrize(
    "page, passed", [("clients/python/README.md", 6), ("docs/how-to/test-a-telephone.md", 1)]
)
def test_the_tests_of_a_page_pass(pytester: pytest.Pytester, page: str, passed: int) -> None:
    (tests,) = re.findall(r"^```python\n(.*?)^```$", (TREE / page).read_text(), re.M | re.S)
    pytester.makepyfile(tests)
    pytester.runpytest("--strict-markers").assert_outcomes(passed=passed)
