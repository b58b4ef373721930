#!/usr/bin/env bash
# powercuts [--seed N] [--cuts N]: kill a host at random moments, as a power cut does (default 1000 times)
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

need run test
configure default
build default powercuts
exec "$(folder_of default)/bin/powercuts" "$@"
