#!/usr/bin/env bash
# help: this list
set -euo pipefail

# A script's second line, "# VERB [ARGUMENTS]: what it does", is its entry here.
echo "usage: ./dev VERB [ARGUMENTS]"
for script in "$CLOCK_TREE"/tools/dev/*.sh; do
  sed -n '2s/^# \([^:]*\): \(.*\)/\1\t\2/p' "$script"
done | while IFS=$'\t' read -r usage text; do
  printf '  %-30s %s\n' "$usage" "$text"
done
