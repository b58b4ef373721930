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

// Device paths lie below a folder of the test's own.
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

TEST(ProcessWithoutRoot, LeavesPathsAsTheyAre) {
  EXPECT_EQ(host::deviceRoot(), "");
  EXPECT_EQ(host::hostPath("/data/fallback_time.txt"), "/data/fallback_time.txt");
}

TEST_F(ProcessWithRoot, PutsDevicePathsBelowIt) {
  EXPECT_EQ(host::deviceRoot(), m_folder.path());
  for (const std::string path : {"/data/fallback_time.txt", "/data/", "/tmp/votk/ipc/ntpclient"}) {
    EXPECT_EQ(host::hostPath(path), onHost(path));
  }
}

TEST_F(ProcessWithRoot, LeavesOtherPathsAsTheyAre) {
  for (const std::string path : {"", "/", "/data", "/database/x", "/tmp/votk", "/tmp/votkx/y",
                                 "/etc/passwd", "data/x", "/sbin/ntpclient", "/tmp/other"}) {
    EXPECT_EQ(host::hostPath(path), path);
  }
}

TEST_F(ProcessWithRoot, TakesARootWithASlashAtItsEnd) {
  host::setDeviceRoot(m_folder.path().string() + "//");
  EXPECT_EQ(host::hostPath("/data/x"), onHost("/data/x"));
}

TEST(DeviceRoot, LeavesPathsBelowItselfAsTheyAre) {
  host::setDeviceRoot("/tmp/votk/run");
  EXPECT_EQ(host::hostPath("/tmp/votk/run/data/x"), "/tmp/votk/run/data/x");
  EXPECT_EQ(host::hostPath("/tmp/votk/runner"), "/tmp/votk/run/tmp/votk/runner");
  host::setDeviceRoot("");
}

TEST_F(ProcessWithRoot, OpensFilesBelowIt) {
  const int created = open("/data/new.txt", O_WRONLY | O_CREAT | O_CLOEXEC, 0640);
  ASSERT_GE(created, 0) << errno;
  EXPECT_EQ(write(created, "text", 4), 4);
  close(created);
  EXPECT_EQ(std::filesystem::file_size(onHost("/data/new.txt")), 4U);
  const auto mode = std::filesystem::status(onHost("/data/new.txt")).permissions();
  EXPECT_EQ(mode & std::filesystem::perms::owner_all,
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(ProcessWithRoot, OpensLargeFilesBelowIt) {
  writeOnHost("/data/large.txt", "x");
  const int file = open64("/data/large.txt", O_RDONLY | O_CLOEXEC);
  ASSERT_GE(file, 0) << errno;
  close(file);
  const int created = open64("/data/made.txt", O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_GE(created, 0) << errno;
  close(created);
  EXPECT_TRUE(std::filesystem::exists(onHost("/data/made.txt")));
}

TEST_F(ProcessWithRoot, OpensStreamsBelowIt) {
  writeOnHost("/data/word.txt", "word");
  for (FILE* file : {fopen("/data/word.txt", "r"), fopen64("/data/word.txt", "r")}) {
    ASSERT_NE(file, nullptr) << errno;
    char word[16] = {};
    EXPECT_EQ(fscanf(file, "%15s", word), 1);
    EXPECT_STREQ(word, "word");
    fclose(file);
  }
}

TEST_F(ProcessWithRoot, TellsTheStatusBelowIt) {
  writeOnHost("/data/five.txt", "12345");
  struct stat status {};
  ASSERT_EQ(stat("/data/five.txt", &status), 0) << errno;
  EXPECT_EQ(status.st_size, 5);
  struct stat64 large {};
  ASSERT_EQ(stat64("/data/five.txt", &large), 0) << errno;
  EXPECT_EQ(large.st_size, 5);
}

TEST_F(ProcessWithRoot, FailsAsTheCallsDo) {
  struct stat status {};
  errno = 0;
  EXPECT_EQ(open("/data/none", O_RDONLY), -1);
  EXPECT_EQ(errno, ENOENT);
  errno = 0;
  EXPECT_EQ(fopen("/data/none", "r"), nullptr);
  EXPECT_EQ(errno, ENOENT);
  errno = 0;
  EXPECT_EQ(stat("/data/none", &status), -1);
  EXPECT_EQ(errno, ENOENT);
}

template <class Call>
auto withoutMemory(Call call) {
  errno = 0;
  const support::NoMemory none;
  return call();
}

TEST_F(ProcessWithRoot, FailsWithoutMemoryForAPath) {
  constexpr const char* kPath = "/data/fallback_time.txt";
  writeOnHost(kPath, "x");
  struct stat status {};
  struct stat64 large {};
  EXPECT_EQ(withoutMemory([&] { return open(kPath, O_RDONLY); }), -1);
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_EQ(withoutMemory([&] { return open64(kPath, O_RDONLY); }), -1);
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_EQ(withoutMemory([&] { return fopen(kPath, "r"); }), nullptr);
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_EQ(withoutMemory([&] { return fopen64(kPath, "r"); }), nullptr);
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_EQ(withoutMemory([&] { return stat(kPath, &status); }), -1);
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_EQ(withoutMemory([&] { return stat64(kPath, &large); }), -1);
  EXPECT_EQ(errno, ENOMEM);
}

TEST_F(ProcessWithRoot, OpensOtherFilesWhereTheyAre) {
  const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
  ASSERT_GE(null, 0);
  close(null);
}

TEST_F(ProcessWithRoot, ServesManyThreads) {
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

// A plug-in finds them by name: the program exports its own.
TEST(DeviceCalls, AreWhatAPluginFinds) {
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
