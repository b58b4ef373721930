#!/usr/bin/env bash
# simulate [--seed N] [--steps N] [--runs N] [--shard I/N] [--results FILE]: random runs of the clock, compared with a reference
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

usage="usage: simulate [--seed N] [--steps N] [--runs N] [--shard I/N] [--results FILE]"
refuse() {
  printf 'dev: %s\n' "$*" >&2
  exit 2
}

# The program is built only for numbers that it takes.
check_number() {
  local numbers='[1-9][0-9]{0,8}' most='from 1 to 999999999'
  [ "$1" != --seed ] || { numbers='[0-9]{1,18}' most='of up to 18 digits'; }
  [[ $2 =~ ^$numbers$ ]] || refuse "$1: \"$2\" is not a whole number $most; $usage"
}

# A shard needs the seed that the other shards have.
words=() shard=()
while [ $# -gt 0 ]; do
  case $1 in
    --shard | --results) shard+=("$1" "${2:-}") ;;
    --seed | --steps | --runs) check_number "$1" "${2:-}" && words+=("$1" "$2") ;;
    *) refuse "\"$1\" is not an option; $usage" ;;
  esac
  shift $(($# > 1 ? 2 : 1))
done
python3 -B "$CLOCK_TREE/tools/dev/cases.py" check ${shard[@]+"${shard[@]}"}
if [[ " ${shard[*]} " == *" --shard "* && " ${words[*]} " != *" --seed "* ]]; then
  refuse '--shard needs --seed N, the same for all shards'
fi

need run test
configure default
build default simulate
value_of() { local value=$2 && [[ " ${words[*]} " =~ .*" $1 "([0-9]+)" " ]] && value=${BASH_REMATCH[1]}; echo "$value"; }
[ ${#shard[@]} -gt 0 ] || [ -t 2 ] || exec "$(folder_of default)/bin/simulate" ${words[@]+"${words[@]}"}
first=$(value_of --seed "$((RANDOM << 15 | RANDOM))")
seq "$first" "$((first + $(value_of --runs 20) - 1))" |
  python3 -B "$CLOCK_TREE/tools/dev/cases.py" run simulations ${shard[@]+"${shard[@]}"} \
    "$(folder_of default)/bin/simulate" --steps "$(value_of --steps 5000)" --runs 1 --seed {}
