#!/usr/bin/env bash
# arm: cross-build for 32-bit ARM, unit tests under qemu, size of the plug-in
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

# bytes of code and data that the telephone has for the plug-in
size_limit=65536

show_size() {
  local plugin size
  plugin=$(mktemp)
  arm-linux-gnueabihf-strip -o "$plugin" "$(folder_of arm)/lib/libClockService.so"
  size=$(arm-linux-gnueabihf-size "$plugin" | awk 'NR == 2 { print $1 + $2 }')
  rm -f "$plugin"
  echo "dev: plug-in for 32-bit ARM, -Os, stripped: $size bytes of text and data, limit $size_limit"
  [ "$size" -le "$size_limit" ]
}

need run test arm
configure arm -DCMAKE_BUILD_TYPE=MinSizeRel -DCLOCK_CROSS_TESTS=ON -DCLOCK_TEST_PER_PROGRAM=ON \
  -DCMAKE_TOOLCHAIN_FILE="$CLOCK_TREE/cmake/toolchains/arm-linux-gnueabihf.cmake"
build arm
run_tests arm
show_size
