#!/usr/bin/env bash
# simulate [--seed N] [--steps N] [--runs N]: random runs of the clock, compared with a reference
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
# Checked before anything is built. Without a run or a step nothing would be compared.
if [[ ! ${*:+ $*} =~ ^(" --seed "[0-9]+|" --"(steps|runs)" "[1-9][0-9]*)*$ ]]; then
  echo "$usage; steps and runs are at least 1" >&2
  exit 2
fi

need run test
configure default
build default simulate
exec "$(folder_of default)/bin/simulate" "$@"
