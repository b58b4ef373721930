#!/usr/bin/env bash
# test [CTEST ARGUMENTS]: set up, build and test; "-L unit" chooses a layer, "-R NAME" names
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"
. "$CLOCK_TREE/tools/dev/chrony.bash"

need run test
have_chrony
configure default
build default
run_tests default "$@"
