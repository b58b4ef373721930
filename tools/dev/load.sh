#!/usr/bin/env bash
# load [--seconds N]: 500 subscribers and 64 callers at once, then every attack at once (default 60 s each)
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

need run test
configure default
build default load
exec "$(folder_of default)/bin/load" "$@"
