"""Tests which faults include_arrows.py reports: arrow_faults.py TREE"""

import pathlib
import sys
import tempfile

COMPONENT = "clock_add_component(\n  NAME host_{0}\n  SOURCES {0}.cpp{1})\n"
# A tree without a fault, in which the folder clock of the host needs the folder base.
TREE = {
    "include/ClockUtils.h": "",
    "platform/Process.h": "",
    "src/Service.h": '#include "ClockUtils.h"\n#include "Process.h"\n',
    "host/base/CMakeLists.txt": COMPONENT.format("base", ""),
    "host/base/Base.h": "#include <nlohmann/json.hpp>\n",
    "host/clock/CMakeLists.txt": COMPONENT.format("clock", "\n  NEEDS host_base"),
    "host/clock/Clock.h": '#include "base/Base.h"\n#include "../base/Base.h"\n',
}
UNCOVERED = "base/ does not need clock/"
CIRCLE = COMPONENT.format("base", "\n  NEEDS host_clock")

# A file that is added or replaced, its content, and the expected fault. None: no fault.
ROWS = [
    ("host/clock/Clock.cpp", '#include "Clock.h"\n#include "Process.h"\n', None),
    # wrong arrows
    ("src/A.cpp", '#include "clock/Clock.h"',
     "src/A.cpp: includes clock/Clock.h: src/ must not see host/"),
    ("src/A.cpp", '#include <clock/Clock.h>',
     "src/A.cpp: includes clock/Clock.h: src/ must not see host/"),
    ("host/base/A.cpp", '#include "Service.h"',
     "host/base/A.cpp: includes Service.h: host/ must not see src/"),
    ("platform/A.h", '#include "../src/Service.h"',
     "platform/A.h: includes ../src/Service.h: platform/ must not see src/"),
    ("examples/A.cpp", '#include "base/Base.h"',
     "examples/A.cpp: includes base/Base.h: examples/ must not see host/"),
    # includes that no NEEDS covers
    ("host/base/A.h", '#include "clock/Clock.h"',
     f"host/base/A.h: includes clock/Clock.h: {UNCOVERED}"),
    ("host/base/A.h", '#include "../clock/Clock.h"',
     f"host/base/A.h: includes ../clock/Clock.h: {UNCOVERED}"),
    ("host/base/A.h", '#include "./../clock/Clock.h"',
     f"host/base/A.h: includes ./../clock/Clock.h: {UNCOVERED}"),
    # folders that need each other
    ("host/base/CMakeLists.txt", CIRCLE,
     "host/: folders that need each other: base > clock > base"),
    # other faults
    ("src/A.cpp", '#include "Gone.h"', "src/A.cpp: includes Gone.h: no such file in the tree"),
    ("src/A.cpp", "#include <nlohmann/json.hpp>",
     "src/A.cpp: includes nlohmann/json.hpp: src/ may use only the C++ library and POSIX"),
    ("platform/A.cpp", "", "platform/A.cpp: platform/ is declarations only"),
]


def faults_with(include_arrows, name, content):
    with tempfile.TemporaryDirectory() as folder:
        tree = pathlib.Path(folder).resolve()
        for path, text in {**TREE, name: content}.items():
            (tree / path).parent.mkdir(parents=True, exist_ok=True)
            (tree / path).write_text(text)
        return include_arrows.faults_of(tree)


def main(tree):
    sys.path.insert(0, str(pathlib.Path(tree, "tests/tree")))
    import include_arrows

    wrong = 0
    for name, content, fault in ROWS:
        found = faults_with(include_arrows, name, content)
        expected = [fault] if fault else []
        if found != expected:
            print(f"{name} with {content!r}: {found}, should be {expected}")
            wrong += 1
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
