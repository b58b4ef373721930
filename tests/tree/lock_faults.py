"""Tests which faults locks.py reports: lock_faults.py TREE"""

import pathlib
import sys
import tempfile

TABLE = "| `m_lock` | a |\n| `Known` (`g_x`) | b |\n"
# A file, its content, and whether its lock lacks a row.
ROWS = [
    ("include/A.h", "  Semaphore m_lock{1, 1};", False),
    ("include/A.h", "  mutable Semaphore otherLock{1, 1};", True),
    ("src/A.cpp", "  Semaphore otherLock;", True),
    ("host/base/Known.h", "  mutable Mutex m_mutex;  // text", False),
    ("host/base/Other.h", "  mutable Mutex m_mutex;  // text", True),
    ("host/base/Other.cpp", "constinit host::Mutex g_writing;", True),
    ("host/base/Other.cpp", "  static Mutex mutex;", True),
    ("host/base/Known.h", "  Mutex m_mutex;\n  Mutex m_other;", True),
    ("host/base/Known.h", "  std::mutex m_mutex;", True),
    ("host/base/Known.h", "  mutable std::shared_mutex m_mutex;", True),
    ("host/base/Known.h", "// A std::mutex is needed.\n  std::unique_lock<std::mutex> m_lock;", False),
    ("host/base/Mutex.h", "  std::mutex m_mutex;", False),
    ("host/base/Other.cpp", "  const MutexLock lock(m_mutex);\n  Mutex& m_mutex;", False),
]


def main(tree):
    sys.path.insert(0, str(pathlib.Path(tree, "tests/tree")))
    import locks

    wrong = 0
    for name, content, expected in ROWS:
        with tempfile.TemporaryDirectory() as folder:
            for path, text in {locks.DOCUMENT: TABLE, name: content}.items():
                place = pathlib.Path(folder, path)
                place.parent.mkdir(parents=True, exist_ok=True)
                place.write_text(text)
            found = list(locks.faults_of(pathlib.Path(folder)))
        if bool(found) != expected:
            print(f"{name} with {content!r}: {found}, expected {'a' if expected else 'no'} fault")
            wrong += 1
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
