#!/usr/bin/env bash
# simulate [--seed N] [--steps N] [--lives N]: random lives of the clock beside a model of it
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

need run test
configure default
build default simulate
exec "$(folder_of default)/bin/simulate" "$@"
