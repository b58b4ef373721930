#!/usr/bin/env bash
# bench [--factor X] [--json FILE] [--only NAME]...: speed, memory and disk writes, each with a bound
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

# Checks the options before anything is built; the program checks their values.
all_words_are_known() {
  while [ $# -gt 0 ]; do
    case $1 in
      --factor | --json | --only) [ $# -gt 1 ] || return 1 && shift 2 ;;
      --factor=* | --json=* | --only=*) shift ;;
      *) return 1 ;;
    esac
  done
}
usage="usage: bench [--factor X] [--json FILE] [--only NAME]..."
case ${1:-} in
  -h | --help)
    echo "$usage"
    exit 0
    ;;
esac
all_words_are_known "$@" || {
  echo "$usage" >&2
  exit 2
}

need run test
configure default
build default clockbench
echo "dev: measuring on one processor"
exec "$(folder_of default)/bin/clockbench" "$@"
