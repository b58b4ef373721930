#!/usr/bin/env bash
# coverage: what the tests reach of plug-in and host, as table and HTML
set -euo pipefail
. "$CLOCK_TREE/tools/dev/packages.bash"
. "$CLOCK_TREE/tools/dev/building.bash"
. "$CLOCK_TREE/tools/dev/chrony.bash"

folder=$(folder_of coverage)

# clang counts regions of the source, so there are no branches for exceptions of a call. The counts
# are in mapped files, so that a process that is killed counts up to its end.
flags="-O0 -g0 -fcoverage-mapping -fprofile-instr-generate=$folder/profile/%4m%c.profraw"
flags+=" -mllvm -runtime-counter-relocation -Wno-unused-command-line-argument"
# Only what is shown below is counted: not the tests, and no library.
counted=$CLOCK_TREE/build/coverage.list
flags+=" -fprofile-list=$counted"

# The layers that reach code. Left out are two long programs that reach no further code, and the
# report flood, whose time limits this slow build does not meet.
layers='^(unit|plugin|host|conformance|integration|scenario|simulation|faults|fuzz)$'
programs=(clockhost clockctl ntpclient
  tests/{support,unit,plugin,host,conformance,integration,scenarios,simulation,faults,fuzz}/all)
left_out='^(plugin_century|plugin_replaced_clients|integration_report_flood)_test[.]'

measure() {
  rm -rf "$folder/profile"
  run_tests coverage -L "$layers" -E "$left_out" |
    python3 -B "$CLOCK_TREE/tools/dev/cases.py" progress tests
  llvm-profdata merge -sparse -o "$folder/tests.profdata" "$folder"/profile/*.profraw
}

# What ships: the plug-in and the host's programs.
of_programs() {
  llvm-cov "$@" -instr-profile "$folder/tests.profdata" "$folder/lib/libClockService.so" \
    -object "$folder/bin/clockhost" -object "$folder/bin/clockctl" -object "$folder/bin/ntpclient" \
    "$CLOCK_TREE/include" "$CLOCK_TREE/src" "$CLOCK_TREE/host" 2>"$folder/llvm-cov.log" ||
    { cat "$folder/llvm-cov.log" >&2 && return 1; }
}

need run panel test coverage
have_chrony
mkdir -p "${counted%/*}"
printf 'src:%s/*\n' "$CLOCK_TREE"/{include,src,host} >"$counted"
configure coverage -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=None \
  -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags" -DCLOCK_TEST_PER_PROGRAM=ON "${together[@]}" \
  "${linked_by_lld[@]}" \
  -DCLOCK_SIMULATION_STEPS=4000 -DCLOCK_SIMULATION_NEW_STEPS=1000
build coverage "${programs[@]}"
measure
rm -rf "$folder/html"
of_programs show -format=html -show-branches=count -output-dir="$folder/html"
of_programs export -format=lcov >"$folder/tests.lcov"
echo "dev: HTML in build/coverage/html/index.html"
python3 -B "$CLOCK_TREE/tools/dev/coverage.py" "$CLOCK_TREE" "$folder/tests.lcov"
