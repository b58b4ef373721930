# shellcheck shell=bash
# have_chrony: unpacks chronyd, the time server of the tests, from its Debian package into build/chrony.
# It is not installed, so that no service of the machine changes. Tests that need it skip themselves
# when it is missing.

have_chrony() {
  local folder=$CLOCK_TREE/build/chrony
  [ ! -x "$folder/usr/sbin/chronyd" ] || return 0
  command -v apt-get >/dev/null || return 0
  need chrony
  echo "dev: unpacking chronyd into ${folder#"$CLOCK_TREE"/}"
  mkdir -p "$folder"
  (cd "$folder" && { apt-get download -q chrony || { as_root apt-get update -q && apt-get download -q chrony; }; } &&
    dpkg -x chrony_*.deb .) || echo "dev: chrony cannot be downloaded; its tests are skipped" >&2
}
