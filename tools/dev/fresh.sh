#!/usr/bin/env bash
# fresh [COMMAND...]: run and test in a bare Debian root, then COMMAND there
set -Eeuo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"
. "$CLOCK_TREE/tools/dev/bare.bash"

folder=$(folder_of fresh)
root=$folder/root
place=srv/clone # in the root

# Clones only what is committed. ./dev package uses the bare root again.
clone_tree() {
  git clone -q "$CLOCK_TREE" "$folder/clone"
  mkdir -p "$folder/clone/build"
  pack_root "$root" "$folder/clone/build/bare.tar"
  as_root mv "$folder/clone" "$root/$place"
  as_root chown -R root:root "$root/$place"
}

# inside COMMAND...: runs it in the clone, with its own process and mount namespaces and a bare environment
inside() {
  local settings
  mapfile -t settings < <(proxies)
  settings+=(PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LANG=C.UTF-8
    ${CI:+"CI=$CI"})
  as_root unshare --mount --pid --fork --kill-child --root="$root" --wd="/$place" --mount-proc \
    env -i "${settings[@]}" bash tools/fresh/inside.sh "$@"
}

# The benchmark's figures remain, whether the checks passed or not.
keep_figures() {
  local figures=$root/$place/build/bench.json
  if [ -f "$figures" ]; then cp "$figures" "$CLOCK_TREE/build/"; fi
}

need fresh
as_root rm -rf "$folder"
rm -f "$CLOCK_TREE/build/bench.json" # of an earlier run
mkdir -p "$folder"
trap 'keep_figures; echo "dev: the root is left in ${folder#"$CLOCK_TREE"/}" >&2' ERR
make_root "$root"
clone_tree
inside "$@"
keep_figures
as_root rm -rf "$folder"
