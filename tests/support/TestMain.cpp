// The start of test programs of the plug-in: in a private folder, which the device's paths and
// storage lie in, and in a zone that is not the machine's.

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
