# shellcheck shell=bash
# Builds with sanitizers.

# configure_sanitized NAME SANITIZERS [CMAKE OPTION...]. -O1 -g1 (line
# numbers, no other debug information) builds fast, and reports name the line. clang compiles the tests in
# half of gcc's time.
configure_sanitized() {
  # shellcheck disable=SC2154  # "all_together" and "linked_by_lld" are of building.bash
  configure "$1" -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=None \
    "-DCMAKE_CXX_FLAGS=-O1 -g1" -DCLOCK_TEST_PER_PROGRAM=ON "${all_together[@]}" \
    "${linked_by_lld[@]}" -DCLOCK_SANITIZE="$2" "${@:3}"
}

# Both together, with what the fuzzer needs: the tests of "sanitize" and the targets of "fuzz" share
# their objects.
# shellcheck disable=SC2034  # for scripts that include this
address_undefined=(address-undefined "address,undefined" -DCLOCK_FUZZ=ON)
