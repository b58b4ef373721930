import re

from conftest import TREE

import deskclock


def test_the_version_is_that_of_the_host() -> None:
    project = (TREE / "CMakeLists.txt").read_text()
    match = re.search(r"project\(ClockService VERSION (\S+)", project)
    assert match and match[1] == deskclock.__version__
