#!/usr/bin/env bash
# merge FILE...: join the results of shards; names failed cases and lost shards
set -euo pipefail

if [ $# -eq 0 ]; then
  echo "dev: name files of results; usage: merge FILE...; simulate, scenarios, mutate and fuzz write them with --results FILE" >&2
  exit 2
fi
exec python3 -B "$CLOCK_TREE/tools/dev/cases.py" merge "$@"
