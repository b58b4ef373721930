#!/usr/bin/env bash
# mutate [--seed N] [--count N] [--jobs N] [FILE | FOLDER]...: which bugs the tests miss, in the plug-in or in what is named
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"

# Built once as the tree is; what a mutant changes is built beside it. The library's assertions end a
# program that reads past an end. Tests start the programs that lie beside their own folder.
need run test mutate
targets=$(python3 -B "$CLOCK_TREE/tools/mutate/options.py" "$CLOCK_TREE" "$@")
configure mutate/base -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_FLAGS="-O0 -g0 -w -D_GLIBCXX_ASSERTIONS" \
  -DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld -DCLOCK_TESTED_PROGRAMS=../bin
read -ra targets <<<"$targets"
build mutate/base "${targets[@]}"
exec python3 -B "$CLOCK_TREE/tools/mutate/mutate.py" "$CLOCK_TREE" "$(folder_of mutate)" "$@"
