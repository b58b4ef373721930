#!/usr/bin/env bash
# run [CLOCKHOST ARGUMENTS]: set up, build and start the host
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

need run
configure default
build default ClockService clockhost clockctl ntpclient
echo "dev: starting clockhost"
exec "$(folder_of default)/bin/clockhost" "$@"
