#!/usr/bin/env bash
# simulate [--seed N] [--steps N] [--runs N] [--shard I/N] [--results FILE]: random runs of the clock, compared with a reference
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

usage="usage: simulate [--seed N] [--steps N] [--runs N] [--shard I/N] [--results FILE]"
case ${1:-} in
  -h | --help)
    echo "$usage"
    exit 0
    ;;
esac
# A shard needs the seed that the other shards have.
words=() shard=()
while [ $# -gt 0 ]; do
  case $1 in
    --shard | --results) shard+=("$1" "${2:-}") && shift $(($# > 1 ? 2 : 1)) ;;
    *) words+=("$1") && shift ;;
  esac
done
set -- ${words[@]+"${words[@]}"}
python3 -B "$CLOCK_TREE/tools/dev/cases.py" check ${shard[@]+"${shard[@]}"}
# Checked before anything is built. Without a run or a step nothing would be compared.
if [[ ! ${*:+ $*} =~ ^(" --seed "[0-9]+|" --"(steps|runs)" "[1-9][0-9]*)*$ ]]; then
  echo "$usage; steps and runs are at least 1" >&2
  exit 2
fi

if [[ " ${shard[*]} " == *" --shard "* && " ${words[*]} " != *" --seed "* ]]; then
  echo 'dev: --shard needs --seed N, the same for all shards' >&2
  exit 2
fi

need run test
configure default
build default simulate
value_of() { local value=$2 && [[ " ${words[*]} " =~ .*" $1 "([0-9]+)" " ]] && value=${BASH_REMATCH[1]}; echo "$value"; }
[ ${#shard[@]} -gt 0 ] || [ -t 2 ] || exec "$(folder_of default)/bin/simulate" "$@"
first=$(value_of --seed "$((RANDOM << 15 | RANDOM))")
seq "$first" "$((first + $(value_of --runs 20) - 1))" |
  python3 -B "$CLOCK_TREE/tools/dev/cases.py" run simulations ${shard[@]+"${shard[@]}"} \
    "$(folder_of default)/bin/simulate" --steps "$(value_of --steps 5000)" --runs 1 --seed {}
