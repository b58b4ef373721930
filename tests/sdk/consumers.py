"""Builds the plug-in as firmware does, installs it, and uses it from outside:

consumers.py TREE CMAKE NINJA COMPILER TOOLCHAIN EMULATOR...

The installed plug-in is built with Ninja, for this machine with only the compiler's own tools in PATH;
the others are built with make.

Each consumer builds the example and runs it: with the CMake package, with pkg-config (from an installation
with another folder of libraries), and as a part of another project. The plug-in of that project, from
another copy of the sources and in other folders, must have the same bytes as the installed one. TOOLCHAIN: the toolchain file, or "none".
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

PARTS = ["CMakeLists.txt", "CMakePresets.json", "cmake", "include", "platform", "src",
         "conformance", "examples"]
TOOLS = ["sh", "as", "ld", "ar", "ranlib", "nm", "objcopy", "objdump", "readelf", "strip"]
LIBRARY = "libClockService.so"
FLAGS = "-DCMAKE_CXX_FLAGS=-g"  # debug information is where paths of the machine turn up
MAKE = "-GUnix Makefiles"
OTHER_LIBDIR = "lib/other-triplet"
TWO_HOURS = "16.06.16 00:00\n01:00\n02:00\n"

PROJECT = """cmake_minimum_required(VERSION 3.25)
project(Telephone LANGUAGES CXX)
include(FetchContent)
FetchContent_Declare(ClockService SOURCE_DIR {clock})
FetchContent_MakeAvailable(ClockService)
add_subdirectory({clock}/examples loader)
find_package(GTest GLOBAL)
if(GTest_FOUND)
  add_executable(check EXCLUDE_FROM_ALL {clock}/examples/check/Adapter.cpp)
  target_link_libraries(check PRIVATE example_framework ClockService::platform-check)
endif()
if(CLOCK_INSTALL)
  add_library(framework INTERFACE)
  target_link_libraries(framework INTERFACE ClockService::Platform)
  install(TARGETS framework EXPORT framework)
  install(EXPORT framework DESTINATION lib/cmake/framework)
endif()
"""

# A program that links the plug-in and lacks the seam.
LINKED = """cmake_minimum_required(VERSION 3.25)
project(Linked LANGUAGES CXX)
find_package(ClockService 1 REQUIRED)
file(WRITE ${CMAKE_BINARY_DIR}/main.cpp "#include <ClockService.h>\\nint main() { return createClockService() == nullptr; }")
add_executable(linked ${CMAKE_BINARY_DIR}/main.cpp)
target_link_libraries(linked PRIVATE ClockService::ClockService)
"""


def run(*command, **options):
    result = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, text=True,
                            stderr=subprocess.STDOUT, **options)
    if result.returncode != 0:
        sys.exit(f"failed: {command}\n{result.stdout}")
    return result.stdout


def bare_environment(folder):
    """PATH is a folder with only the tools that come with a compiler."""
    (folder / "tools").mkdir()
    for tool in TOOLS:
        (folder / "tools" / tool).symlink_to(shutil.which(tool))
    return {"PATH": str(folder / "tools"), "HOME": str(folder)}


class Consumers:
    def __init__(self, folder, tree, cmake, ninja, compiler, toolchain, *emulator):
        self.folder, self.tree, self.cmake, self.compiler = folder, tree, cmake, compiler
        self.examples = tree / "examples"
        self.emulator = emulator
        self.ninja = ["-GNinja", f"-DCMAKE_MAKE_PROGRAM={ninja}", "-DCLOCK_CCACHE=OFF"]
        self.options = [f"-DCMAKE_CXX_COMPILER={compiler}"]
        if toolchain != "none":
            self.options = ["--toolchain", toolchain]
        self.installed = folder / "installed"
        self.plugin = self.installed / "lib" / LIBRARY
        self.found = [f"-DCMAKE_PREFIX_PATH={self.installed}"]
        self.other_libraries = folder / "other" / OTHER_LIBDIR
        self.found_in_other = [f"-DClockService_DIR={self.other_libraries}/cmake/ClockService"]
        self.flags_found = {"PKG_CONFIG_LIBDIR": str(self.other_libraries / "pkgconfig")}
        self.faults = []

    def copy_of_the_tree(self, name):
        place = self.folder / name
        place.mkdir(parents=True)
        for part in PARTS:
            copy = shutil.copytree if (self.tree / part).is_dir() else shutil.copy
            copy(self.tree / part, place / part)
        return place

    def build(self, source, *options, **environment):
        build = source / "build"
        run(self.cmake, "-S", source, "-B", build, *self.options, *options, **environment)
        run(self.cmake, "--build", build, "-j2", **environment)
        return build

    def install(self):
        clock = self.copy_of_the_tree("clock")
        environment = os.environ if "--toolchain" in self.options else bare_environment(self.folder)
        build = clock / "build/presets/device"
        run(self.cmake, "--preset", "device", *self.options, *self.ninja, FLAGS, env=environment, cwd=clock)
        run(self.cmake, "--build", "--preset", "device", "-j2", env=environment, cwd=clock)
        run(self.cmake, "--install", build, "--prefix", self.folder / "staged")
        (self.folder / "staged").rename(self.installed)  # an installation may be moved
        self.install_with_other_folders(build)
        shutil.rmtree(clock)

    def install_with_other_folders(self, build):
        """As distributions do: they give the folder without its type."""
        run(self.cmake, build, f"-DCMAKE_INSTALL_LIBDIR={OTHER_LIBDIR}")
        run(self.cmake, "--install", build, "--prefix", self.folder / "other")
        if not (self.other_libraries / LIBRARY).exists():
            self.faults.append(f"the plug-in is not in {OTHER_LIBDIR}")
        absolute = subprocess.run([self.cmake, build, "-DCMAKE_INSTALL_LIBDIR=/opt/lib"],
                                  stderr=subprocess.PIPE, stdout=subprocess.DEVNULL, text=True)
        if "CMAKE_INSTALL_LIBDIR is absolute: /opt/lib; should be" not in absolute.stderr:
            self.faults.append(f"an absolute folder of libraries is not refused: {absolute}")

    def installed_files(self):
        return {str(path.relative_to(self.installed)) for path in self.installed.rglob("*")
                if not path.is_dir()}

    def check_installed_files(self):
        project = (self.tree / "CMakeLists.txt").read_text()
        version = re.search(r"project\(ClockService VERSION ([\d.]+)", project)[1]
        wanted = {f"lib/{LIBRARY}{end}" for end in ["", "." + version.split(".")[0], "." + version]}
        wanted.add("lib/pkgconfig/ClockService.pc")
        for name in ["Config", "ConfigVersion", "Config-minsizerel"]:
            wanted.add(f"lib/cmake/ClockService/ClockService{name}.cmake")
        for headers in ["include", "platform"]:
            names = [path.name for path in (self.tree / headers).glob("*.h")]
            wanted |= {f"include/ClockService/{headers}/{name}" for name in names}
        tests = [path for path in (self.tree / "conformance").rglob("*") if path.suffix in (".h", ".cpp")]
        wanted |= {f"include/ClockService/{path.relative_to(self.tree)}" for path in tests}
        for name in sorted(wanted ^ self.installed_files()):
            self.faults.append(f"{'not ' if name in wanted else ''}installed: {name}")

    def check_loader(self, consumer, loader, plugin):
        printed = subprocess.run([*self.emulator, loader, plugin, "--hours", "2"], text=True,
                                 capture_output=True)
        if printed.stdout != TWO_HOURS:
            self.faults.append(f"{consumer}: the loader prints {printed}, should be {TWO_HOURS!r}")

    def use_the_package(self):
        shutil.copytree(self.examples, self.folder / "package")
        build = self.build(self.folder / "package", MAKE, *self.found)
        self.check_loader("package", build / "loader", self.plugin)

    def check_the_framework(self):
        """Not for another processor: GoogleTest is installed for this one only."""
        if self.emulator:
            return
        build = self.build(self.folder / "package/check", MAKE, *self.found)
        result = run(build / "check_example", "--gtest_brief=1")
        if "left out: StoragePromise" not in result:
            self.faults.append(f"platform-check: should say what is left out: {result}")

    def link(self):
        source = self.folder / "linked"
        source.mkdir()
        (source / "CMakeLists.txt").write_text(LINKED)
        run(self.cmake, "-S", source, "-B", source / "build", *self.options, MAKE, *self.found_in_other)
        made = subprocess.run([self.cmake, "--build", source / "build"], capture_output=True, text=True)
        if "Storage::store" not in made.stdout + made.stderr:
            self.faults.append(f"link: should say that Storage::store is undefined: {made}")

    def refuse_another_major_version(self):
        version = self.other_libraries / "cmake/ClockService/ClockServiceConfigVersion.cmake"
        version.write_text(re.sub(r'"\d+(\.\d+\.\d+")', r'"99\1', version.read_text()))
        refused = subprocess.run([self.cmake, "-S", self.examples, "-B", self.folder / "refused",
                                  *self.options, f"-DClockService_DIR={version.parent}"],
                                 capture_output=True, text=True)
        if not re.search(r"not\s+accepted:[^,]*, version: 99", refused.stderr):
            self.faults.append(f"version 99 of the package is not refused: {refused}")

    def use_pkg_config(self):
        environment = {**os.environ, **self.flags_found}
        flags = run("pkg-config", "--cflags", "ClockService", env=environment).split()
        plugin = run("pkg-config", "--variable=plugin", "ClockService", env=environment).strip()
        sources = [*self.examples.glob("*.cpp"), *self.examples.glob("framework/*.cpp")]
        loader = self.folder / "with-pkg-config"
        run(self.compiler, "-std=c++17", *flags, f"-I{self.examples}", *sources, "-rdynamic", "-ldl", "-pthread",
            "-o", loader)
        self.check_loader("pkg-config", loader, plugin)

    def use_the_sources(self):
        clock = self.copy_of_the_tree("elsewhere/sources/clock")
        project = self.folder / "project"
        project.mkdir()
        (project / "CMakeLists.txt").write_text(PROJECT.format(clock=clock))
        build = self.build(project, MAKE, "-DCMAKE_BUILD_TYPE=MinSizeRel", FLAGS)
        run(self.cmake, build, "-DCLOCK_INSTALL=ON")  # the project may export what contains the clock's targets
        plugin = next(build.rglob(LIBRARY))
        self.check_loader("subproject", build / "loader/loader", plugin)
        if plugin.read_bytes() != self.plugin.read_bytes():
            self.faults.append("the plug-in of another folder has other bytes")
        if bytes(self.folder) in plugin.read_bytes():
            self.faults.append(f"the plug-in contains {self.folder}, where it was built")


def main(tree, *words):
    with tempfile.TemporaryDirectory() as name:
        consumers = Consumers(pathlib.Path(name).resolve(), pathlib.Path(tree), *words)
        consumers.install()
        consumers.check_installed_files()
        consumers.use_the_package()
        consumers.check_the_framework()
        consumers.link()
        consumers.refuse_another_major_version()
        consumers.use_pkg_config()
        consumers.use_the_sources()
    print(*consumers.faults, sep="\n")
    return 1 if consumers.faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
