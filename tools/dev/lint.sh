#!/usr/bin/env bash
# lint: formatting, clang-tidy with clang's warnings, shellcheck, manual pages, checks of the tree
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"
cd "$CLOCK_TREE"

files_of() { git ls-files --cached --others --exclude-standard -- "$@"; }

check_format() { files_of '*.h' '*.cpp' '*.c' | xargs clang-format --dry-run -Werror; }

check_scripts() { files_of dev .ci/run .ci/checks '*.sh' '*.bash' | xargs shellcheck -x -P SCRIPTDIR; }

# clang-tidy compiles every source with clang and the tree's warnings, so nothing is built here. It
# reads the unity files of the targets, which are in the build folder. So the .clang-tidy of a folder
# is copied there.
check_tidy() {
  local folder log file
  folder=$(folder_of lint)
  log=$folder/clang-tidy.log
  for file in $(files_of '*/.clang-tidy'); do
    mkdir -p "$folder/${file%/*}"
    cp "$file" "$folder/$file"
  done
  run-clang-tidy -quiet -p "$folder" -checks=-bugprone-suspicious-include -j "$(nproc)" \
    >"$log" 2>&1 || {
    grep -vE 'clang-tidy-|warnings? generated' "$log" >&2
    return 1
  }
}

check_tree() {
  python3 -B tests/tree/include_arrows.py . && python3 -B tests/tree/files.py .
}

# The pages, as both formatters read them, and the completions, as their shells do. Narrower lines than
# those of 100 columns cannot hold the longest names of the protocol's tables.
check_manual() {
  local page folder wrong=0
  configure default
  build default manual >/dev/null
  folder=$(folder_of default)/manual
  for page in "$folder"/*.[157]; do
    mandoc -T lint -W warning "$page" || wrong=1
    [ -z "$(LC_ALL=C.UTF-8 MANWIDTH=100 man --warnings -l "$page" 2>&1 >/dev/null | tee -a /dev/stderr)" ] ||
      wrong=1
  done
  for page in "$folder"/*.bash; do bash -n "$page" || wrong=1; done
  for page in "$folder"/_clock*; do zsh -n "$page" || wrong=1; done
  for page in "$folder"/*.fish; do fish -n "$page" || wrong=1; done
  return $wrong
}

need run panel test lint
configure lint -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_C_COMPILER=clang -DCMAKE_BUILD_TYPE=Debug \
  -DCLOCK_PRECOMPILED_TESTS=OFF "${all_together[@]}"
cmake "$(folder_of lint)" >/dev/null # nothing is built here that would notice new sources
build lint panel_page >/dev/null # a generated source
failed=()
for part in format scripts manual tree tidy; do
  SECONDS=0
  verdict=passed
  "check_$part" || { verdict=FAILED && failed+=("$part"); }
  echo "dev: lint $part: $verdict after $SECONDS s"
done
[ ${#failed[@]} -eq 0 ]
