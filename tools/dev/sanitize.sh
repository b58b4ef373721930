#!/usr/bin/env bash
# sanitize [KIND]...: all tests under the sanitizers address, undefined, thread (default all)
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"
. "$CLOCK_TREE/tools/dev/sanitizers.bash"
. "$CLOCK_TREE/tools/dev/chrony.bash"

# Each program runs its tests in one process, in a shuffled order that is the same each time, so that a
# failure can be repeated.
sanitized() {
  configure_sanitized "$@"
  build "$1"
  GTEST_SHUFFLE=1 GTEST_RANDOM_SEED="${GTEST_RANDOM_SEED:-1}" run_tests "$1"
}

run_one() {
  case $1 in
    address | undefined | thread) sanitized "$1" "$1" ;;
    address,undefined) sanitized "${address_undefined[@]}" ;;
    *)
      echo "dev: unknown sanitizer \"$1\"; there are address, undefined and thread" >&2
      return 2
      ;;
  esac
}

need run panel test sanitize
have_chrony
# If both address and undefined are wanted, they share one build.
[ $# -gt 0 ] || set -- address,undefined thread
for sanitizer in "$@"; do run_one "$sanitizer"; done
