// The start of test programs of the plug-in: in a private folder, which the device's paths and
// storage lie in, and in a zone that is not the machine's.

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <filesystem>
#include <system_error>

#include "platform/StateFolder.h"
#include "support/TemporaryFolder.h"

namespace {

// Leaves the folder before it goes.
class WorkingFolder {
 public:
  WorkingFolder() {
    for (const char* const name : {"data", "sbin", "ipc", "state"})
      std::filesystem::create_directory(m_folder / name);
    std::filesystem::current_path(m_folder.path());
    host::setStorageFolder(m_folder / "state");
  }
  ~WorkingFolder() {
    std::error_code ignored;
    std::filesystem::current_path(m_former, ignored);
  }
  WorkingFolder(const WorkingFolder&) = delete;
  WorkingFolder& operator=(const WorkingFolder&) = delete;

 private:
  const std::filesystem::path m_former = std::filesystem::current_path();
  const support::TemporaryFolder m_folder;
};

int runTests() {
  const WorkingFolder folder;
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
