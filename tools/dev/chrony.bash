# shellcheck shell=bash
# have_chrony: puts chronyd, the time server of the tests, into build/chrony, unpacked from its Debian
# package and not installed, so that no service of the machine is touched. The tests that use it tell
# when it is not there.

have_chrony() {
  local folder=$CLOCK_TREE/build/chrony
  [ ! -x "$folder/usr/sbin/chronyd" ] || return 0
  command -v apt-get >/dev/null || return 0
  need chrony
  echo "dev: unpacking chronyd into ${folder#"$CLOCK_TREE"/}"
  mkdir -p "$folder"
  (cd "$folder" && { apt-get download -q chrony || { as_root apt-get update -q && apt-get download -q chrony; }; } &&
    dpkg -x chrony_*.deb .) || echo "dev: chrony cannot be had; its tests are skipped" >&2
}
