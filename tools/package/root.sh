#!/usr/bin/env bash
# root.sh FOLDER TREE BARE [NAME=VALUE...]: tries the packages of FOLDER in copies of the bare root that the archive
# BARE contains, with these words in the environment. It runs as root in mount and process namespaces of its own. The
# copies are in memory and are gone at the end. They share this machine's downloads of apt.
set -euo pipefail
folder=$1 tree=$2 bare=$3
shift 3

# A changed root that is no mount point, as that of ./dev fresh, is private already.
mount --make-rprivate / 2>/dev/null || true
for part in alone installed; do
  root=$folder/root-$part
  mkdir "$root"
  mount -t tmpfs tmpfs "$root"
  tar -x -C "$root" -f "$bare"
  mount -t proc proc "$root/proc"
  mount --rbind /dev "$root/dev"
  for place in tmp run; do mount -t tmpfs -o mode=1777 tmpfs "$root/$place"; done
  mount --bind /var/cache/apt/archives "$root/var/cache/apt/archives"
  mkdir -p "$root/tmp/tester/build/package"
  cp "$folder"/{clockhost,libclockservice,python3}*_*.deb "$folder"/*-linux-*.tar.xz "$root/tmp/tester/build/package"
  rm -f "$root"/tmp/tester/build/package/*-dbgsym_*
  mount --bind -o ro "$tree" "$root/mnt"
  [ ! -e /etc/resolv.conf ] || cp /etc/resolv.conf "$root/etc/"
  python3 -B "$tree/tools/package/trial.py" "$part" "$root" "$@"
  umount --recursive "$root"
done
