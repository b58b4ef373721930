#!/usr/bin/env bash
# help [VERB]: this list, or the entry of a verb
set -euo pipefail

# A script's second line, "# VERB [ARGUMENTS]: what it does", is its entry here.
entry() {
  sed -n '2s/^# \([^:]*\): \(.*\)/\1\t\2/p' "$1" | while IFS=$'\t' read -r usage text; do
    printf '  %-30s %s\n' "$usage" "$text"
  done
}

verb=${1:-}
if [[ $# -gt 1 || ! $verb =~ ^[a-z]*$ || ! -f $CLOCK_TREE/tools/dev/${verb:-help}.sh ]]; then
  printf 'dev: unknown verb "%s"; "./dev help" lists them\n' "$*" >&2
  exit 2
fi
echo "usage: ./dev VERB [ARGUMENTS]"
for script in "$CLOCK_TREE"/tools/dev/${verb:-*}.sh; do entry "$script"; done
[ -n "$verb" ] || printf '  %-30s %s\n' "--version" "print the version"
