#!/usr/bin/env bash
# powercuts [--seed N] [--cuts N]: cut a telephone's power at random moments (default 1000)
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

need run test
configure default
build default powercuts
exec "$(folder_of default)/bin/powercuts" "$@"
