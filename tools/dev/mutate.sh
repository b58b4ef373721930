#!/usr/bin/env bash
# mutate [--seed N] [--count N] [--jobs N] [--shard I/N] [--results FILE] [FILE | FOLDER]...: which bugs the tests miss (default: in the plug-in)
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

# A mutant may signal every process that it sees, by kill(-1), and leave files behind. So it sees only
# the processes of this run, and the temporary folder is removed after the run.
with_processes_of_its_own() {
  local options=(--mount --propagation unchanged --pid --fork --kill-child --mount-proc)
  [ "$(id -u)" -eq 0 ] || options+=(--user --map-current-user)
  # The shell between reaps orphaned processes.
  unshare "${options[@]}" bash -c '"$@"; exit' mutate "$@" &
  trap 'kill -KILL $!' INT TERM
  wait $!
}

temporary_folder() {
  local memory=/dev/shm
  [ -w "$memory" ] || memory=${TMPDIR:-/tmp}
  TMPDIR=$(mktemp -d "$memory/mutate-XXXXXX")
  export TMPDIR
  trap 'rm -rf "$TMPDIR"' EXIT
  chmod 0711 "$TMPDIR" # some tests are another user for a while
}

# The unchanged tree is built once, each source of the host alone, which shows that it includes what it
# uses. The objects that a mutant changes are built separately. The C++ library's assertions end a
# program that reads out of bounds. Tests start the programs in ../bin.
need run test mutate
targets=$(python3 -B "$CLOCK_TREE/tools/mutate/options.py" "$CLOCK_TREE" "$@")
configure mutate/base -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_FLAGS="-O0 -g0 -D_GLIBCXX_ASSERTIONS" \
  -DCMAKE_UNITY_BUILD=OFF "${linked_by_lld[@]}" -DCLOCK_TESTED_PROGRAMS=../bin
read -ra targets <<<"$targets"
build mutate/base "${targets[@]}"
temporary_folder
with_processes_of_its_own \
  python3 -B "$CLOCK_TREE/tools/mutate/mutate.py" "$CLOCK_TREE" "$(folder_of mutate)" "$@"
