// main() of the plug-in's test programs: sets up a private folder for the device's paths and the
// storage, and a time zone that does not depend on the machine.

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>

#include "support/WorkingFolder.h"

namespace {

int runTests() {
  const support::WorkingFolder folder;
  setenv("TZ", "UTC0", 1);  // NOLINT(concurrency-mt-unsafe): before any thread
  tzset();
  return RUN_ALL_TESTS();
}

}  // namespace

int main(int argc, char** argv) {
  try {
    testing::InitGoogleMock(&argc, argv);
    return runTests();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    return 1;
  }
}
