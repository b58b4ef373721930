#!/usr/bin/env bash
# mutate [--seed N] [--count N] [--jobs N] [FILE]...: which bugs put into the plug-in the tests miss
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

# Those that find most for their time come first. Those over a century and with many
# callers at once prove what these prove, for much longer.
programs=(clock_unit_test clock_device_paths_test clock_mktime_test plugin_clock_test
  plugin_events_test plugin_management_test plugin_listener_test plugin_ntp_client_test
  plugin_quiet_log_test plugin_threads_test plugin_unreadable_time_test plugin_any_bytes_test)

# Built once as the tree is; what a mutant changes is built beside it. The library's assertions end a
# program that reads past an end.
need run test mutate
python3 -B "$CLOCK_TREE/tools/mutate/options.py" "$CLOCK_TREE" "$@"
configure mutate/base -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_FLAGS="-O0 -g0 -w -D_GLIBCXX_ASSERTIONS" \
  -DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld
build mutate/base "${programs[@]}"
exec python3 -B "$CLOCK_TREE/tools/mutate/mutate.py" "$CLOCK_TREE" "$(folder_of mutate)" \
  "${programs[*]}" "$@"
