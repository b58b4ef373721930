#!/usr/bin/env bash
# scenarios [--shard I/N] [--results FILE] FILE|FOLDER...: run scenarios, or a shard of them
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

usage="usage: scenarios [--shard I/N] [--results FILE] FILE|FOLDER..."
options=()
while [[ ${1:-} == --shard || ${1:-} == --results ]]; do
  options+=("$1" "${2:-}")
  shift $(($# > 1 ? 2 : 1))
done
python3 -B "$CLOCK_TREE/tools/dev/cases.py" check "${options[@]}"
if [[ $# -eq 0 || $1 == -* ]]; then
  echo "dev: name a scenario or a folder after the options; $usage" >&2
  exit 2
fi
for place in "$@"; do
  [ -e "$place" ] || { echo "dev: no scenario or folder \"$place\"" >&2 && exit 2; }
done

# As clockhost expands folders.
list() {
  local place
  for place in "$@"; do
    if [ -d "$place" ]; then find "$place" -maxdepth 1 -name '*.scenario' | LC_ALL=C sort; else echo "$place"; fi
  done
}

need run
configure default
build default clockhost ClockService
list "$@" | python3 -B "$CLOCK_TREE/tools/dev/cases.py" run scenarios "${options[@]}" \
  "$(folder_of default)/bin/clockhost" --scenario {}
