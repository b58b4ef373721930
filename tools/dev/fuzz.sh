#!/usr/bin/env bash
# fuzz [TARGET]... [--seconds N] [--shard I/N] [--results FILE]: look for input that breaks a parser (all of them, 20 s each)
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"
. "$CLOCK_TREE/tools/dev/sanitizers.bash"

# New inputs stay in build/. To keep one, copy it to the tree's corpus under a name that describes it.
corpus=$CLOCK_TREE/tests/fuzz/corpus
finds=$CLOCK_TREE/build/fuzz-corpus
faults=$CLOCK_TREE/build/fuzz-faults
logs=$CLOCK_TREE/build/fuzz-logs
programs=$(folder_of address-undefined)/bin/fuzz
known=("$corpus"/*)
known=("${known[@]##*/}")

usage() {
  echo "dev: $1" >&2
  exit 2
}

read_words() {
  seconds=20
  targets=() shard=()
  while [ $# -gt 0 ]; do
    case $1 in
      --seconds) seconds=${2:-} && shift ;;
      --shard | --results) shard+=("$1" "${2:-}") && shift ;;
      *) targets+=("$1") ;;
    esac
    shift || break
  done
  [[ $seconds =~ ^[1-9][0-9]*$ ]] || usage '"--seconds" takes a number of seconds, 1 or more'
  [ ${#targets[@]} -gt 0 ] || targets=("${known[@]}")
  local target
  for target in "${targets[@]}"; do
    [[ $target != */* && -d $corpus/$target ]] ||
      usage "no fuzz target \"$target\"; there are ${known[*]}"
  done
  python3 -B "$CLOCK_TREE/tools/dev/cases.py" check ${shard[@]+"${shard[@]}"}
  all=("${targets[@]}")
  if [[ " ${shard[*]}" =~ .*" --shard "([0-9]+)/([0-9]+) ]]; then
    mapfile -t targets < <(printf '%s\n' "${all[@]}" |
      awk -v i="${BASH_REMATCH[1]}" -v n="${BASH_REMATCH[2]}" 'NR % n == i % n')
  fi
}

# The results of this shard, for ./dev merge.
write_results() {
  # shellcheck disable=SC2016  # for the shell that it starts
  printf '%s\n' "${all[@]}" |
    python3 -B "$CLOCK_TREE/tools/dev/cases.py" run "fuzz targets" "${shard[@]}" \
      bash -c '[ "$(tail -n 1 "$1/$0")" = passed ]' {} "$logs" || [ $? -eq 1 ] # a target failed
}

# fuzz_target TARGET: runs until the time is over or a fault is found. -entropic_scale_per_exec_time
# keeps inputs of a megabyte from taking all the time. -timeout allows for a busy machine.
fuzz_target() {
  mkdir -p "$finds/$1" "$faults/$1"
  rm -f "$faults/$1"/*
  "$programs/fuzz-$1" -max_total_time="$seconds" -timeout=100 -report_slow_units=100 \
    -rss_limit_mb=3072 -entropic_scale_per_exec_time=1 -print_final_stats=1 \
    -artifact_prefix="$faults/$1/" "$finds/$1" "$corpus/$1" >"$logs/$1" 2>&1 &&
    echo passed >>"$logs/$1"
}

# Runs as many targets in parallel as there are processors.
fuzz_all_targets() {
  local target progress ended=0
  mkdir -p "$logs"
  exec 3> >(exec python3 -B "$CLOCK_TREE/tools/dev/cases.py" progress "fuzz targets")
  progress=$!
  for target in "${targets[@]}"; do
    while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do count_one; done
    fuzz_target "$target" 3>&- &
  done
  while [ "$ended" -lt ${#targets[@]} ]; do count_one; done
  exec 3>&-
  wait "$progress" || true
}

# Waits for the end of a target.
count_one() {
  wait -n || true
  ended=$((ended + 1))
  echo "$ended/${#targets[@]}" >&3
}

end_all() {
  local group
  exec 3>&-
  exec 2>/dev/null # the shell would report each group that it ends
  for group in $(jobs -p); do kill -KILL -- "-$group" || true; done
  wait
  rm -rf "$scratch"
}

passed() { [ "$(tail -n 1 "$logs/$1")" = passed ]; }

# number_in TARGET TEXT: the last number after the text in the target's log
number_in() { grep -aoE "$2 *[0-9]+" "$logs/$1" | tail -n 1 | grep -oE '[0-9]+$' || echo 0; }

show_figures() {
  local target
  printf '%-18s %9s %7s %7s %7s\n' target runs runs/s edges corpus
  for target in "${targets[@]}"; do
    printf '%-18s %9d %7d %7d %7d\n' "$target" "$(number_in "$target" executed_units:)" \
      "$(number_in "$target" exec_per_sec:)" "$(number_in "$target" cov:)" \
      "$(number_in "$target" corp:)"
  done
}

show_fault() {
  local input
  echo "dev: fuzz $1: FAILED"
  grep -aE 'what\(\):|runtime error:|ERROR: ' "$logs/$1" | cut -c1-300 | head -n 2 || true
  echo "  log:       ${logs#"$CLOCK_TREE"/}/$1"
  for input in "$faults/$1"/*; do
    [ -f "$input" ] || continue
    echo "  input:     ${input#"$CLOCK_TREE"/}"
    echo "  replay:    ${programs#"$CLOCK_TREE"/}/fuzz-$1 ${input#"$CLOCK_TREE"/}"
  done
}

show_faults() {
  local target failed=0
  for target in "${targets[@]}"; do
    passed "$target" || { failed=1 && show_fault "$target"; }
  done
  return "$failed"
}

read_words "$@"
need run panel test sanitize
# With all checks of the address and undefined-behaviour sanitizers; each finding ends the program.
configure_sanitized "${address_undefined[@]}"
build address-undefined "${targets[@]/#/fuzz-}"

# The targets' temporary folders, in memory if possible. They are removed at the end, and the targets,
# each its own process group, are killed.
scratch=$(mktemp -d -p /dev/shm 2>/dev/null || mktemp -d)
trap end_all EXIT
trap 'exit 1' HUP INT TERM
set -m
export TMPDIR=$scratch ASAN_OPTIONS=quarantine_size_mb=8:malloc_context_size=8

echo "dev: fuzzing ${#targets[@]} targets, $seconds s each"
fuzz_all_targets
show_figures
[ ${#shard[@]} -eq 0 ] || write_results
show_faults
