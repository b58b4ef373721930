# shellcheck shell=bash
# need GROUP...: installs the missing Debian packages of these groups of tools/packages.txt. On a
# system without dpkg the user has to install them.

packages_of() {
  local group
  for group in "$@"; do
    awk -v head="[$group]" '/^\[/ { on = ($0 == head); next } on && /^[^#]/' \
      "$CLOCK_TREE/tools/packages.txt"
  done | sort -u
}

missing_of() {
  local installed
  # dpkg-query fails if it does not know one of the packages, but lists those that it knows.
  installed=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "$@" 2>/dev/null || true)
  printf '%s\n' "$@" | grep -vxFf <(sed -n 's/^installed //p' <<<"$installed") || true
}

as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

need() {
  command -v dpkg-query >/dev/null || return 0
  local wanted missing
  mapfile -t wanted < <(packages_of "$@")
  mapfile -t missing < <(missing_of "${wanted[@]}")
  [ ${#missing[@]} -gt 0 ] || return 0
  echo "dev: installing Debian packages: ${missing[*]}"
  as_root apt-get update -q
  as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get install -q -y --no-install-recommends "${missing[@]}" </dev/null
  # CMake looks again for what it has not found before.
  touch -c "$CLOCK_TREE"/build/*/CMakeCache.txt
}
