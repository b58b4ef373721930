#!/usr/bin/env bash
# bench [--factor X] [--json FILE] [--only NAME]...: speed, size, wake-ups beside their floors
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"
. "$CLOCK_TREE/tools/dev/arm.bash"

# Before anything is built; what stands behind the words is looked at by the program.
all_words_are_known() {
  while [ $# -gt 0 ]; do
    case $1 in
      --factor | --json | --only) [ $# -gt 1 ] || return 1 && shift 2 ;;
      --factor=* | --json=* | --only=*) shift ;;
      *) return 1 ;;
    esac
  done
}
usage="usage: bench [--factor X] [--json FILE] [--only NAME]..."
case ${1:-} in
  -h | --help)
    echo "$usage"
    exit 0
    ;;
esac
all_words_are_known "$@" || {
  echo "$usage" >&2
  exit 2
}

# Another processor's plug-in is built only for its figure.
arm_size_is_wanted() { [[ " $* " != *" --only"* || " $* " == *arm-size* ]]; }

need run test
configure default
build default clockbench
if arm_size_is_wanted "$@"; then
  need cross
  arm=$(built_arm_plugin)
  size=$(arm_plugin_size "$arm")
  set -- --arm-size "$size" "$@"
fi
echo "dev: measuring on one processor"
exec "$(folder_of default)/bin/clockbench" "$@"
