#!/usr/bin/env bash
# package: Debian packages and a tarball in build/package, checked and tried; installs none of them here
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"
. "$CLOCK_TREE/tools/dev/bare.bash"

folder=$(folder_of package)
bare=$(folder_of bare.tar)
version=$("$CLOCK_TREE/dev" --version)
source=$folder/clock-service-$version
# Debian's own tools, whatever else is installed
clean=(env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 HOME="$HOME")
if command -v ccache >/dev/null; then clean+=("CCACHE_DIR=$(ccache -k cache_dir)"); fi

# The files of the clone, also those that are not committed, without what has been built
copy_tree() {
  mkdir -p "$source"
  (cd "$CLOCK_TREE" && git ls-files -z --cached --others --exclude-standard --deduplicate |
    tar -c --null --files-from=- --ignore-failed-read | tar -x -C "$source")
}

build_packages() { (cd "$source" && "${clean[@]}" dpkg-buildpackage --no-sign); }

check_packages() {
  local staged=("$source"/debian/{clockhost,libclockservice*,python3-deskclock}/)
  # Not with --fail-on: it also counts what lintian itself holds back.
  "${clean[@]}" lintian --display-info --pedantic "$folder"/*.changes | tee "$folder/lintian.txt" &&
    [ ! -s "$folder/lintian.txt" ] &&
    ! grep -rlF "$folder" "${staged[@]}" # a build elsewhere gives the same bytes
}

# The same programs for other systems: an installation that may be unpacked anywhere; its unit names /opt/clock
make_tarball() {
  local name released
  released=$(dpkg-parsechangelog -l "$source/debian/changelog" -S Timestamp)
  name=clock-service-$version-$(dpkg-architecture -q DEB_HOST_GNU_TYPE)
  DESTDIR=$folder/installed cmake --install "$source"/obj-* --prefix /opt/clock --strip &&
    tar -c -C "$folder/installed/opt" --transform "s,^clock,$name," --sort=name --owner=0 --group=0 --numeric-owner --mode=go-w \
      --mtime="@$released" clock | xz >"$folder/$name.tar.xz"
}

# Made once, or by ./dev fresh
make_bare_root() {
  [ ! -e "$bare" ] || return 0
  need fresh && make_root "$folder/root" && pack_root "$folder/root" "$bare" && as_root rm -rf "$folder/root"
}

# In copies of the bare root, which are kept in memory and are gone afterwards
try_packages() {
  local reached
  mapfile -t reached < <(proxies)
  as_root unshare --mount --propagation unchanged --pid --fork --kill-child \
    bash "$CLOCK_TREE/tools/package/root.sh" "$folder" "$CLOCK_TREE" "$bare" "${reached[@]}"
}

need run panel test package
rm -rf "$folder"
mkdir -p "$folder"
for part in copy_tree build_packages check_packages make_tarball make_bare_root try_packages; do
  SECONDS=0
  $part >"$folder/$part.log" 2>&1 || {
    tail -n 40 "$folder/$part.log" >&2
    echo "dev: package ${part//_/ }: FAILED; all of it: $folder/$part.log" >&2
    exit 1
  }
  echo "dev: package ${part//_/ }: passed after $SECONDS s"
done
ls -l "$folder"/*.deb "$folder"/*.tar.xz
