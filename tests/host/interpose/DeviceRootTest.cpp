#include "interpose/DeviceRoot.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "support/NoMemory.h"
#include "support/TemporaryFolder.h"

namespace {

// The device root is a temporary folder.
class ProcessWithRoot : public testing::Test {
 protected:
  ProcessWithRoot() {
    std::filesystem::create_directories(m_folder.path() / "data");
    std::filesystem::create_directories(m_folder.path() / "tmp/votk/ipc");
    host::setDeviceRoot(m_folder.path());
  }
  ~ProcessWithRoot() override { host::setDeviceRoot(""); }

  [[nodiscard]] std::string onHost(const std::string& path) const {
    return m_folder.path().string() + path;
  }
  void writeOnHost(const std::string& path, const std::string& text) const {
    std::ofstream(onHost(path)) << text;
  }

  const support::TemporaryFolder m_folder;
};

TEST(ProcessWithoutRoot, LeavesPathsUnchanged) {
  EXPECT_EQ(host::deviceRoot(), "");
  EXPECT_EQ(host::hostPath("/data/fallback_time.txt"), "/data/fallback_time.txt");
}

TEST_F(ProcessWithRoot, MapsDevicePathsBelowTheRoot) {
  EXPECT_EQ(host::deviceRoot(), m_folder.path());
  for (const std::string path : {"/data/fallback_time.txt", "/data/", "/tmp/votk/ipc/ntpclient"}) {
    EXPECT_EQ(host::hostPath(path), onHost(path));
  }
}

TEST_F(ProcessWithRoot, LeavesOtherPathsUnchanged) {
  for (const std::string path : {"", "/", "/data", "/database/x", "/tmp/votk", "/tmp/votkx/y",
                                 "/etc/passwd", "data/x", "/sbin/ntpclient", "/tmp/other"}) {
    EXPECT_EQ(host::hostPath(path), path);
  }
}

TEST_F(ProcessWithRoot, AcceptsARootThatEndsInSlashes) {
  host::setDeviceRoot(m_folder.path().string() + "//");
  EXPECT_EQ(host::hostPath("/data/x"), onHost("/data/x"));
}

TEST(DeviceRoot, LeavesPathsBelowTheRootUnchanged) {
  host::setDeviceRoot("/tmp/votk/run");
  EXPECT_EQ(host::hostPath("/tmp/votk/run/data/x"), "/tmp/votk/run/data/x");
  EXPECT_EQ(host::hostPath("/tmp/votk/runner"), "/tmp/votk/run/tmp/votk/runner");
  host::setDeviceRoot("");
}

// The redefined calls, each as a function that says whether the call succeeds.
struct FileCall {
  const char* name;
  bool (*succeeds)(const char* path);
};

bool closes(int file) {
  return file >= 0 && close(file) == 0;
}
bool closes(FILE* file) {
  return file != nullptr && fclose(file) == 0;
}

template <class Status>
bool isOneByte(int result, const Status& status) {
  return result == 0 && status.st_size == 1;
}

constexpr FileCall kFileCalls[] = {
    {"open", [](const char* path) { return closes(open(path, O_RDONLY | O_CLOEXEC)); }},
    {"open64", [](const char* path) { return closes(open64(path, O_RDONLY | O_CLOEXEC)); }},
    {"fopen", [](const char* path) { return closes(fopen(path, "r")); }},
    {"fopen64", [](const char* path) { return closes(fopen64(path, "r")); }},
    {"stat",
     [](const char* path) {
       struct stat status {};
       return isOneByte(stat(path, &status), status);
     }},
    {"stat64",
     [](const char* path) {
       struct stat64 status {};
       return isOneByte(stat64(path, &status), status);
     }},
};

TEST_F(ProcessWithRoot, ReachesFilesBelowTheRoot) {
  writeOnHost("/data/one.txt", "1");
  for (const FileCall& call : kFileCalls) {
    EXPECT_TRUE(call.succeeds("/data/one.txt")) << call.name << ": " << errno;
    errno = 0;
    EXPECT_FALSE(call.succeeds("/data/none.txt")) << call.name;
    EXPECT_EQ(errno, ENOENT) << call.name;
  }
  EXPECT_TRUE(closes(open("/dev/null", O_RDWR | O_CLOEXEC))) << "not a device path";
}

TEST_F(ProcessWithRoot, CreatesFilesBelowTheRootWithTheGivenMode) {
  const auto create = [](auto call, const char* path) {
    return closes(call(path, O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  };
  EXPECT_TRUE(create(open, "/data/a.txt"));
  EXPECT_TRUE(create(open64, "/data/b.txt"));
  for (const char* const path : {"/data/a.txt", "/data/b.txt"}) {
    EXPECT_EQ(std::filesystem::status(onHost(path)).permissions(), std::filesystem::perms(0600));
  }
}

TEST_F(ProcessWithRoot, FailsWithoutMemoryForAPath) {
  constexpr const char* kPath = "/data/fallback_time.txt";
  writeOnHost(kPath, "x");
  for (const FileCall& call : kFileCalls) {
    errno = 0;
    bool succeeded = true;
    {
      const support::NoMemory none;
      succeeded = call.succeeds(kPath);
    }
    EXPECT_FALSE(succeeded) << call.name;
    EXPECT_EQ(errno, ENOMEM) << call.name;
  }
}

TEST_F(ProcessWithRoot, MapsPathsOnManyThreads) {
  writeOnHost("/data/shared.txt", "x");
  const auto read = [] {
    for (int i = 0; i < 200; ++i) {
      const int file = open("/data/shared.txt", O_RDONLY | O_CLOEXEC);
      EXPECT_GE(file, 0);
      close(file);
    }
  };
  std::thread one(read);
  std::thread two(read);
  for (int i = 0; i < 50; ++i) host::setDeviceRoot(m_folder.path());
  one.join();
  two.join();
}

// A plug-in's calls are resolved by name: the program's definitions must come first.
TEST(RedefinedCalls, AreExportedByTheProgram) {
  void* program = dlopen(nullptr, RTLD_NOW);
  ASSERT_NE(program, nullptr);
  void* c = dlopen("libc.so.6", RTLD_NOW);
  ASSERT_NE(c, nullptr);
  for (const char* const name : {"time", "settimeofday", "stime", "sysinfo", "open", "fopen",
                                 "stat", "_Z33votk_set_time_seconds_since_epochm"}) {
    void* own = dlsym(program, name);
    EXPECT_NE(own, nullptr) << name;
    EXPECT_NE(own, dlsym(c, name)) << name;
  }
  dlclose(c);
  dlclose(program);
}

}  // namespace
