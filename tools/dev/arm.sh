#!/usr/bin/env bash
# arm: cross-build for 32-bit ARM, unit tests under qemu, size of the plug-in
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"
. "$CLOCK_TREE/tools/dev/arm.bash"

# bytes: the telephone's room for the plug-in's code and data
size_limit=65536

show_size() {
  local size
  size=$(arm_plugin_size arm)
  echo "dev: plug-in for 32-bit ARM, -Os, stripped: $size bytes of text and data, limit $size_limit"
  [ "$size" -le "$size_limit" ]
}

need run test cross arm
configure_arm_tests
build arm
run_tests arm
show_size
