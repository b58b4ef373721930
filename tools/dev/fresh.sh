#!/usr/bin/env bash
# fresh [COMMAND...]: run and test in a bare Debian root, then COMMAND there
set -Eeuo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

folder=$(folder_of fresh)
root=$folder/root
place=srv/clone # in the root

# This machine's Debian package sources, from apt: "CODENAME URI RELEASE COMPONENT".
debian_sources() {
  # shellcheck disable=SC2016  # apt fills these in
  apt-get indextargets --format '$(ORIGIN)|$(CODENAME) $(REPO_URI) $(RELEASE) $(COMPONENT)' \
    'Created-By: Packages' | sed -n 's/^Debian|//p' | sort -u
}

# Only debootstrap's smallest set of packages, and no /etc/hosts.
make_root() {
  local release sources mirror
  release=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
  as_root apt-get update -q >"$folder/apt.log" 2>&1 || { cat "$folder/apt.log" >&2 && return 1; }
  sources=$(debian_sources)
  mirror=$(awk -v release="$release" '$1 == release { print $2; exit }' <<<"$sources")
  if [ -z "$mirror" ]; then
    echo "dev: apt knows no Debian source for \"$release\"; fresh needs a Debian machine" >&2
    return 1
  fi
  echo "dev: making a bare Debian root in ${root#"$CLOCK_TREE"/}"
  as_root debootstrap --variant=minbase "$release" "$root" "$mirror" >"$folder/debootstrap.log" 2>&1 ||
    { tail -n 20 "$folder/debootstrap.log" >&2 && return 1; }
  awk '{ print "deb", $2, $3, $4 }' <<<"$sources" | as_root tee "$root/etc/apt/sources.list" >/dev/null
  as_root rm -f "$root/etc/hosts"
}

# Clones only what is committed.
clone_tree() {
  git clone -q "$CLOCK_TREE" "$folder/clone"
  as_root mv "$folder/clone" "$root/$place"
  as_root chown -R root:root "$root/$place"
}

# inside COMMAND...: runs it in the clone, with its own process and mount namespaces and a bare environment
inside() {
  local variable settings=(PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin
    HOME=/root LANG=C.UTF-8)
  for variable in CI http_proxy https_proxy no_proxy HTTP_PROXY HTTPS_PROXY NO_PROXY; do
    [ -z "${!variable:-}" ] || settings+=("$variable=${!variable}")
  done
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
make_root
clone_tree
inside "$@"
keep_figures
as_root rm -rf "$folder"
