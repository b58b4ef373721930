#!/usr/bin/env bash
# build [TARGET]...: set up and build everything, or these targets
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

need run panel test
configure default
build default "$@"
