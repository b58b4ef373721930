# shellcheck shell=bash
# Builds for 32-bit ARM, and the size of the plug-in there.

arm_options=(-DCMAKE_BUILD_TYPE=MinSizeRel
  "-DCMAKE_TOOLCHAIN_FILE=$CLOCK_TREE/cmake/toolchains/arm-linux-gnueabihf.cmake")

# configure_arm_tests: the plug-in and the tests that run under qemu, in build/arm.
configure_arm_tests() {
  # shellcheck disable=SC2154  # "together" is of building.bash
  configure arm "${arm_options[@]}" -DCLOCK_CROSS_TESTS=ON -DCLOCK_TEST_PER_PROGRAM=ON \
    "${together[@]}"
}

# arm_plugin_size NAME: bytes of code and data of the stripped plug-in in build/NAME.
arm_plugin_size() {
  local plugin
  plugin=$(mktemp)
  arm-linux-gnueabihf-strip -o "$plugin" "$(folder_of "$1")/lib/libClockService.so" &&
    arm-linux-gnueabihf-size "$plugin" | awk 'NR == 2 { print $1 + $2 }'
  rm -f "$plugin"
}
