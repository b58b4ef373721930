#!/usr/bin/env bash
# faults: runs in which the n-th system call of a kind fails, for each n
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

need run test
configure default
build default faults_test

# Prints the figures as they come, and the whole log if a test fails or there is no figure.
log=$CLOCK_TREE/build/faults.log
program=$(folder_of default)/bin/tests/faults_test
"$program" --gtest_color=no 2>&1 | tee "$log" | grep --line-buffered -E ': (each of|ran out at)' || {
  grep -vE '^\[ +(RUN|OK) ' "$log" >&2 || true
  exit 1
}
