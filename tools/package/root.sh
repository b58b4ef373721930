#!/usr/bin/env bash
# root.sh FOLDER TREE: tries the packages of FOLDER in a copy of this machine's root. It runs as root in mount and
# process namespaces of its own. The copy is an overlay: what changes is in memory, and is gone at the end.
set -euo pipefail
folder=$1 tree=$2
memory=$folder/memory
root=$memory/root

# A changed root that is no mount point, as that of ./dev fresh, is private already.
mount --make-rprivate / 2>/dev/null || true
mkdir "$memory"
mount -t tmpfs tmpfs "$memory"
mkdir "$memory"/{changes,work} "$root"
mount -t overlay -o "lowerdir=/,upperdir=$memory/changes,workdir=$memory/work" overlay "$root"
mount -t proc proc "$root/proc"
mount --rbind /dev "$root/dev"
for place in tmp run; do mount -t tmpfs -o mode=1777 tmpfs "$root/$place"; done
mkdir "$root/tmp/packages"
cp "$folder"/{clockhost,libclockservice,python3}*_*.deb "$folder"/*-linux-*.tar.xz "$root/tmp/packages"
rm "$root"/tmp/packages/*-dbgsym_*
mount --bind -o ro "$tree" "$root/mnt"
chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 HOME=/root \
  python3 -B /mnt/tools/package/trial.py /tmp/packages

# Files and folders that were not there before
new_paths() {
  local path
  cd "$memory/changes"
  find . -mindepth 1 ! -type c | while IFS= read -r path; do
    [ -e "/$path" ] || [ -L "/$path" ] || echo "$path"
  done
}

# dpkg and the tools that it calls may keep notes.
left=$(new_paths | grep -vE '^\./var/(lib/dpkg|log|cache)/' || true)
[ -z "$left" ] || { printf 'left after the purge: %s\n' "$left" && exit 1; }
echo "nothing is left after the purge"
