# shellcheck shell=bash
# A bare Debian root of this machine's release. Include packages.bash first.

# This machine's Debian package sources, from apt: "CODENAME URI RELEASE COMPONENT".
debian_sources() {
  # shellcheck disable=SC2016  # apt fills these in
  apt-get indextargets --format '$(ORIGIN)|$(CODENAME) $(REPO_URI) $(RELEASE) $(COMPONENT)' \
    'Created-By: Packages' | sed -n 's/^Debian|//p' | sort -u
}

# make_root ROOT: only debootstrap's smallest set of packages, and no /etc/hosts; logs go to the folder of ROOT
make_root() {
  local root=$1 folder release sources mirror
  folder=$(dirname "$root")
  release=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
  as_root apt-get update -q >"$folder/apt.log" 2>&1 || { cat "$folder/apt.log" >&2 && return 1; }
  sources=$(debian_sources)
  mirror=$(awk -v release="$release" '$1 == release { print $2; exit }' <<<"$sources")
  if [ -z "$mirror" ]; then
    echo "dev: apt knows no Debian source for \"$release\"; a bare root needs a Debian machine" >&2
    return 1
  fi
  echo "dev: making a bare Debian root in ${root#"$CLOCK_TREE"/}"
  as_root debootstrap --variant=minbase "$release" "$root" "$mirror" >"$folder/debootstrap.log" 2>&1 ||
    { tail -n 20 "$folder/debootstrap.log" >&2 && return 1; }
  awk '{ print "deb", $2, $3, $4 }' <<<"$sources" | as_root tee "$root/etc/apt/sources.list" >/dev/null
  as_root rm -f "$root/etc/hosts"
}

# pack_root ROOT FILE: without the packages that debootstrap has fetched
pack_root() {
  as_root tar -c -C "$1" --exclude './var/cache/apt/archives/*.deb' . >"$2.part" &&
  mv "$2.part" "$2"
}

# How this machine reaches others, as words for env
proxies() {
  local variable
  for variable in http_proxy https_proxy no_proxy HTTP_PROXY HTTPS_PROXY NO_PROXY; do
    [ -z "${!variable:-}" ] || printf '%s=%s\n' "$variable" "${!variable}"
  done
}
