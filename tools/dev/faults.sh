#!/usr/bin/env bash
# faults: each call that a telephone's life depends on fails once; how many of each kind
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

if [ $# -gt 0 ]; then
  echo 'dev: "faults" takes no words: it makes each call of each kind fail' >&2
  exit 2
fi

need run test
configure default
build default faults_test

# The figures as they come; all that was said is shown when a test fails, and when there are none.
log=$CLOCK_TREE/build/faults.log
program=$(folder_of default)/bin/tests/faults_test
"$program" --gtest_color=no 2>&1 | tee "$log" | grep --line-buffered -E ': (each of|ran out at)' || {
  grep -vE '^\[ +(RUN|OK) ' "$log" >&2 || true
  exit 1
}
