#!/usr/bin/env bash
# simulate [--seed N] [--steps N] [--lives N]: random lives of the clock beside a model of it
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

usage="usage: simulate [--seed N] [--steps N] [--lives N]"
case ${1:-} in
  -h | --help)
    echo "$usage"
    exit 0
    ;;
esac
# Before anything is built. A run of no lives, or of no steps, would agree with anything.
if [[ ! ${*:+ $*} =~ ^(" --seed "[0-9]+|" --"(steps|lives)" "[1-9][0-9]*)*$ ]]; then
  echo "$usage, steps and lives from 1 on" >&2
  exit 2
fi

need run test
configure default
build default simulate
exec "$(folder_of default)/bin/simulate" "$@"
