#!/usr/bin/env bash
# ctl [CLOCKCTL ARGUMENTS]: clockctl for the running host
set -euo pipefail
. "$CLOCK_TREE/tools/dev/building.bash"

program=$(folder_of default)/bin/clockctl
if [ ! -x "$program" ]; then
  echo 'dev: clockctl is not built yet; "./dev run" builds it and starts the host' >&2
  exit 3
fi
exec "$program" "$@"
