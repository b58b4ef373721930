#!/usr/bin/env bash
# bench [--compare REF] [--factor X] [--json FILE] [--only NAME]...: speed, memory and disk writes, each with a bound
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

usage='usage: bench [--factor X | --compare REF] [--json FILE] [--only NAME]...'
explained="$usage
Exits 0 when all bounds are met, 1 when one is not, 2 for wrong arguments.
--compare measures this tree and the commit REF alternately instead, and prints which figures changed by
more than their noise. Exits 0 when none got worse, 1 when one did. REF is built in build/compare."

refuse() {
  printf '%s\n' "$*" >&2
  exit 2
}

# Checks the options before anything is built; the program checks their values.
ref='' words=()
while [ $# -gt 0 ]; do
  case $1 in
    -h | --help) echo "$explained" && exit 0 ;;
    --compare=?*) ref=${1#*=} && shift ;;
    --factor=* | --json=* | --only=*) words+=("$1") && shift ;;
    --compare | --factor | --json | --only)
      [ $# -gt 1 ] || refuse "dev: $1: its value is missing; $usage"
      set -- "$1=$2" "${@:3}"
      ;;
    *) refuse "dev: \"$1\" is not understood; $usage" ;;
  esac
done

commit_of() {
  [ -e "$CLOCK_TREE/.git" ] && git -C "$CLOCK_TREE" rev-parse --quiet --verify --short=12 "$1^{commit}" 2>/dev/null
}

require_comparable() {
  [[ " ${words[*]}" != *' --factor='* ]] ||
    refuse 'dev: a comparison has no bounds; use --factor without --compare'
  commit_of HEAD >/dev/null || refuse 'dev: --compare needs git, and a checkout of the repository'
  commit=$(commit_of "$ref") || refuse "dev: \"$ref\" is not a commit of this repository"
}

# Checks the commit out in a clone that borrows the objects of this repository, and does not change it.
# Replaces a clone that was interrupted. The checkout keeps the times of unchanged files, so that little is rebuilt.
check_out() {
  local clone=$1
  flock -n 9 || refuse 'dev: another comparison is running in this tree'
  # shellcheck disable=SC2046  # names of variables; a hook of git has them for this repository
  unset $(git rev-parse --local-env-vars)
  git --git-dir="$clone/.git" --work-tree="$clone" checkout -q --force --detach "$commit" 2>/dev/null || {
    rm -rf "$clone"
    git clone -q --shared --no-checkout "$CLOCK_TREE" "$clone"
    git -C "$clone" checkout -q --detach "$commit"
  }
}

compare() {
  local clone
  clone=$(folder_of compare)
  mkdir -p "${clone%/*}"
  exec 9>"$clone.lock"
  check_out "$clone"
  echo "dev: building $commit in ${clone#"$CLOCK_TREE"/}"
  "$clone/dev" build clockbench || refuse "dev: $commit cannot be built"
  build_this
  exec python3 -B "$CLOCK_TREE/tools/dev/compare.py" "$(folder_of default)/bin/clockbench" \
    "$clone/build/default/bin/clockbench" "$commit" "${words[@]}"
}

build_this() {
  need run test
  configure default
  build default clockbench
}

if [ -n "$ref" ]; then
  require_comparable
  compare
fi
build_this
echo "dev: measuring on one processor"
if [ -e "$CLOCK_TREE/.git" ] &&
  commit=$(git -C "$CLOCK_TREE" describe --always --dirty --abbrev=12 --exclude '*' 2>/dev/null); then
  words+=("--commit=$commit")
fi
exec "$(folder_of default)/bin/clockbench" "${words[@]}"
