# shellcheck shell=bash
# Build folders: build/NAME, each with its own configuration.

folder_of() { printf '%s/build/%s\n' "$CLOCK_TREE" "$1"; }

# Warnings stop those who change the tree, and not those who only build it with another compiler.
as_errors=(-DCMAKE_COMPILE_WARNING_AS_ERROR=ON)

# configure NAME [CMAKE OPTION...]: does nothing when the folder is already configured that way.
configure() {
  local folder stamp wanted
  folder=$(folder_of "$1")
  stamp=$folder/.configured
  wanted="$CLOCK_TREE ${as_errors[*]} ${*:2}"
  if [ -f "$stamp" ] && [ "$(cat "$stamp")" = "$wanted" ]; then return 0; fi
  echo "dev: configuring ${folder#"$CLOCK_TREE"/}"
  rm -rf "$folder"
  mkdir -p "$CLOCK_TREE/build"
  cmake -S "$CLOCK_TREE" -B "$folder" -G Ninja "${as_errors[@]}" "${@:2}" >"$CLOCK_TREE/build/configure.log" 2>&1 || {
    cat "$CLOCK_TREE/build/configure.log" >&2
    return 1
  }
  printf '%s\n' "$wanted" >"$stamp"
}

# For builds whose only purpose is a check, and which compile a source only once.
# shellcheck disable=SC2034  # for scripts that include this
together=(-DCMAKE_UNITY_BUILD_BATCH_SIZE=16)
# The plug-in's sources, too: for checks that neither ship nor measure it.
# shellcheck disable=SC2034
all_together=("${together[@]}" -DCLOCK_UNITY_PLUGIN=ON)

# For builds with clang: lld links in a fifth of the time.
# shellcheck disable=SC2034
linked_by_lld=(-DCMAKE_{EXE,MODULE,SHARED}_LINKER_FLAGS=-fuse-ld=lld)

# build NAME [TARGET...]: everything, or these targets. A second build in the same folder waits.
build() {
  local folder
  folder=$(folder_of "$1")
  echo "dev: building ${folder#"$CLOCK_TREE"/}"
  flock "$folder/.configured" cmake --build "$folder" -j "$(nproc)" ${2:+--target "${@:2}"}
}

# run_tests NAME [CTEST ARGUMENT...]: one more test at a time than there are processors, because many wait
# for processes.
run_tests() {
  ctest --test-dir "$(folder_of "$1")" --no-tests=error --output-on-failure -j "$(($(nproc) + 1))" \
    "${@:2}"
}
