#!/usr/bin/env bash
# inside.sh [COMMAND...]: runs as the first process of a bare root, in the clone. It does what a
# newcomer does first: ./dev run until a call is answered, then ./dev test. Then it runs COMMAND.
set -euo pipefail

log=/tmp/dev-run.log

step() {
  local begin=$SECONDS
  echo "fresh: $*"
  "$@" </dev/null
  echo "fresh: $* passed after $((SECONDS - begin)) s"
}

mount_filesystems() {
  mount -t tmpfs -o mode=1777 tmpfs /dev/shm
  mount -t devpts -o newinstance,ptmxmode=0666 devpts /dev/pts
}

# Waits until the host answers. If it has ended instead, its output says why.
answered_call() {
  until ./dev ctl call getTime 2>/dev/null; do
    kill -0 "$1" 2>/dev/null || { cat "$log" >&2 && return 1; }
    sleep 1
  done
}

run_with_a_call_answered() {
  ./dev run >"$log" 2>&1 &
  local host=$!
  answered_call "$host"
  kill -TERM "$host"
  wait "$host"
}

mount_filesystems
step run_with_a_call_answered
step ./dev test
[ $# -eq 0 ] || step "$@"
