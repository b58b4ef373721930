#!/usr/bin/env bash
# simulate [--seed N] [--steps N] [--runs N]: random runs of the clock beside a reference
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

usage="usage: simulate [--seed N] [--steps N] [--runs N]"
case ${1:-} in
  -h | --help)
    echo "$usage"
    exit 0
    ;;
esac
# Before anything is built. No run, or a run of no step, would agree with anything.
if [[ ! ${*:+ $*} =~ ^(" --seed "[0-9]+|" --"(steps|runs)" "[1-9][0-9]*)*$ ]]; then
  echo "$usage, steps and runs from 1 on" >&2
  exit 2
fi

need run test
configure default
build default simulate
exec "$(folder_of default)/bin/simulate" "$@"
