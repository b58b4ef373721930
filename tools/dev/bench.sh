#!/usr/bin/env bash
# bench [--factor X] [--json FILE] [--only NAME]...: speed, size, wake-ups beside their floors
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"
. "$CLOCK_TREE/tools/dev/arm.bash"

# Another processor's plug-in is built only for its figure.
arm_size_is_wanted() { [[ " $* " != *" --only"* || " $* " == *arm-size* ]]; }

need run test bench
configure default
cmake "$(folder_of default)" >/dev/null # it may have been configured without Google Benchmark
build default clockbench
if arm_size_is_wanted "$@"; then
  need cross
  arm=$(built_arm_plugin)
  size=$(arm_plugin_size "$arm")
  set -- --arm-size "$size" "$@"
fi
echo "dev: measuring on one processor"
exec "$(folder_of default)/bin/clockbench" "$@"
