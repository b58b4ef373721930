#!/usr/bin/env bash
# install [PREFIX]: build and install all (default $PREFIX, else ~/.local), below $DESTDIR if it is set
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

prefix=$(realpath -m -- "${1:-${PREFIX:-$HOME/.local}}")
need run panel
configure default
build default ClockService clockhost clockctl ntpclient clockpanel manual
cmake --install "$(folder_of default)" --prefix "$prefix"
case :$PATH: in
  *":$prefix/bin:"*) ;;
  *) echo "dev: $prefix/bin is not in PATH; add it to call clockhost and clockctl by name" ;;
esac
