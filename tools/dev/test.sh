#!/usr/bin/env bash
# test [CTEST ARGUMENTS]: set up, build and test; "-L unit" chooses a layer, "-R NAME" names
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"
. "$CLOCK_TREE/tools/dev/chrony.bash"

need run panel test
have_chrony
configure default
# "-L LAYER" builds only what the layer needs.
layer=
[[ " $* " =~ " -L "([a-z]+)" " ]] && layer=layer_${BASH_REMATCH[1]}
ninja -C "$(folder_of default)" -t query "${layer:-all}" >/dev/null 2>&1 || layer=
build default ${layer:+"$layer"}
run_tests default "$@"
