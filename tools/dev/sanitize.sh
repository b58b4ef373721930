#!/usr/bin/env bash
# sanitize [KIND]...: all tests under the sanitizers address, undefined, thread (default all)
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"
. "$CLOCK_TREE/tools/dev/chrony.bash"

# -O1 with line numbers only keeps the builds short and the reports exact; clang compiles the tests in
# half of gcc's time. Each program runs its tests in one process, in a shuffled order that is the same
# each time, so that a failure can be repeated.
common=(-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=None
  "-DCMAKE_CXX_FLAGS=-O1 -g1" -DCLOCK_TEST_PER_PROGRAM=ON "${all_together[@]}")

sanitized() {
  local name=$1 sanitizers=$2
  configure "$name" "${common[@]}" -DCLOCK_SANITIZE="$sanitizers"
  build "$name"
  GTEST_SHUFFLE=1 GTEST_RANDOM_SEED="${GTEST_RANDOM_SEED:-1}" run_tests "$name"
}

run_one() {
  case $1 in
    address | undefined | thread) sanitized "$1" "$1" ;;
    address,undefined) sanitized address-undefined "$1" ;;
    *)
      echo "dev: unknown sanitizer \"$1\"; there are address, undefined and thread" >&2
      return 2
      ;;
  esac
}

need run test sanitize
have_chrony
# If both address and undefined are wanted, they share one build.
[ $# -gt 0 ] || set -- address,undefined thread
for sanitizer in "$@"; do run_one "$sanitizer"; done
