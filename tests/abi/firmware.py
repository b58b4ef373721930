"""Checks that a firmware build needs only CMake and a C++ compiler: firmware.py CMAKE COMPILER MAKE TREE

Builds the plug-in alone in a new folder, with only the compiler's own tools in PATH.
"""

import os
import pathlib
import subprocess
import sys
import tempfile

TOOLS = ["as", "ld", "ar", "ranlib", "sh", "nm", "objcopy", "objdump", "readelf", "strip"]


def bare_path(folder):
    """A folder with only the tools that come with a compiler."""
    for tool in TOOLS:
        for place in os.get_exec_path():
            if (found := pathlib.Path(place) / tool).exists():
                (folder / tool).symlink_to(found)
                break
    return str(folder)


def main(cmake, compiler, make, tree):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / "tools").mkdir()
        environment = {"PATH": bare_path(folder / "tools"), "HOME": name}
        build = str(folder / "build")
        options = ["-DCLOCK_WITH_HOST=OFF", "-DCLOCK_CCACHE=OFF", "-DCMAKE_BUILD_TYPE=MinSizeRel"]
        options += [f"-DCMAKE_CXX_COMPILER={compiler}", f"-DCMAKE_MAKE_PROGRAM={make}", "-GNinja"]
        subprocess.run([cmake, "-S", tree, "-B", build, *options], env=environment, check=True)
        subprocess.run([cmake, "--build", build, "-j2"], env=environment, check=True)
        built = list((folder / "build" / "lib").iterdir())
    print("built:", *(path.name for path in built))
    return 0 if [path.name for path in built] == ["libClockService.so"] else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
