#include "runtime/ReportPipe.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <string>
#include <thread>

#include "base/Error.h"
#include "interpose/DeviceRoot.h"
#include "runtime/ListenerWaker.h"
#include "support/FileContent.h"
#include "support/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;

class DeviceWithPipe : public testing::Test {
 protected:
  DeviceWithPipe() { host::setDeviceRoot(m_folder.path()); }
  ~DeviceWithPipe() override { host::setDeviceRoot(""); }

  [[nodiscard]] fs::path onHost(const std::string& path) const {
    return m_folder.path().string() + path;
  }
  static mode_t modeOf(const fs::path& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status.st_mode;
  }
  // What creating the pipe says instead.
  static std::string complaint() {
    try {
      const host::ReportPipe pipe;
      return "none";
    } catch (const host::Error& error) {
      return error.what();
    }
  }

  const support::TemporaryFolder m_folder;
};

TEST_F(DeviceWithPipe, GetsAPipeForItsOwnerOnly) {
  const host::ReportPipe pipe;
  EXPECT_EQ(pipe.path(), onHost("/tmp/votk/ipc/ntpclient"));
  EXPECT_EQ(modeOf(pipe.path()), mode_t{S_IFIFO | 0600});
  EXPECT_EQ(modeOf(onHost("/tmp/votk/ipc")), mode_t{S_IFDIR | 0700});
}

TEST_F(DeviceWithPipe, TakesOverThePipeOfAnEarlierRun) {
  fs::create_directories(onHost("/tmp/votk/ipc"));
  ASSERT_EQ(mkfifo(onHost("/tmp/votk/ipc/ntpclient").c_str(), 0666), 0);
  fs::permissions(onHost("/tmp/votk/ipc"), fs::perms::all);
  fs::permissions(onHost("/tmp/votk/ipc/ntpclient"), fs::perms::all);
  const host::ReportPipe pipe;
  EXPECT_EQ(modeOf(pipe.path()), mode_t{S_IFIFO | 0600});
  EXPECT_EQ(modeOf(onHost("/tmp/votk/ipc")), mode_t{S_IFDIR | 0700});
}

TEST_F(DeviceWithPipe, RefusesWhatIsNoPipe) {
  fs::create_directories(onHost("/tmp/votk/ipc"));
  std::ofstream(onHost("/tmp/votk/ipc/ntpclient")) << "precious";
  EXPECT_NE(complaint().find("ntpclient: is not a named pipe; remove it"), std::string::npos)
      << complaint();
  EXPECT_EQ(support::contentOf(onHost("/tmp/votk/ipc/ntpclient")), "precious");
}

TEST_F(DeviceWithPipe, RefusesALinkInPlaceOfTheFolderOrThePipe) {
  fs::create_directories(onHost("/tmp/votk"));
  fs::create_directories(onHost("/elsewhere"));
  fs::create_directory_symlink(onHost("/elsewhere"), onHost("/tmp/votk/ipc"));
  EXPECT_NE(complaint().find("ipc: is not a folder"), std::string::npos) << complaint();
  fs::remove(onHost("/tmp/votk/ipc"));
  fs::create_directories(onHost("/tmp/votk/ipc"));
  fs::create_symlink("/dev/null", onHost("/tmp/votk/ipc/ntpclient"));
  EXPECT_NE(complaint().find("is not a named pipe"), std::string::npos) << complaint();
}

TEST_F(DeviceWithPipe, RefusesAFileInPlaceOfTheFolder) {
  fs::create_directories(onHost("/tmp/votk"));
  std::ofstream(onHost("/tmp/votk/ipc")) << "x";
  EXPECT_NE(complaint().find("ipc: is not a folder"), std::string::npos) << complaint();
}

TEST_F(DeviceWithPipe, RefusesAWayThatCannotBeMade) {
  std::ofstream(onHost("/tmp")) << "a file";
  EXPECT_NE(complaint(), "none");
}

TEST_F(DeviceWithPipe, RefusesAWayThatOthersMayWrite) {
  fs::create_directories(onHost("/tmp/votk/ipc"));
  fs::permissions(onHost("/tmp"), fs::perms::all);
  EXPECT_NE(complaint().find("/tmp: can be written by others"), std::string::npos) << complaint();
}

// Somebody else could exchange the folder below his own, although it is sticky.
TEST_F(DeviceWithPipe, RefusesAStickyWayOfSomebodyElse) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give a folder away";
  fs::create_directories(onHost("/tmp/votk/ipc"));
  fs::permissions(onHost("/tmp/votk"), fs::perms::all | fs::perms::sticky_bit);
  ASSERT_EQ(chown(onHost("/tmp/votk").c_str(), 12345, 12345), 0);
  EXPECT_NE(complaint().find("votk: belongs to somebody else"), std::string::npos) << complaint();
}

TEST_F(DeviceWithPipe, IsOneHostsAlone) {
  {
    const host::ReportPipe first;
    EXPECT_NE(complaint().find("ntpclient: is in use by another host; give each a --device-root"),
              std::string::npos)
        << complaint();
  }
  EXPECT_EQ(complaint(), "none");
}

TEST_F(DeviceWithPipe, RefusesAFolderOfSomebodyElse) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give a folder away";
  fs::create_directories(onHost("/tmp/votk/ipc"));
  ASSERT_EQ(chown(onHost("/tmp/votk/ipc").c_str(), 12345, 12345), 0);
  EXPECT_NE(complaint().find("ipc: belongs to somebody else"), std::string::npos) << complaint();
  ASSERT_EQ(chown(onHost("/tmp/votk/ipc").c_str(), 0, 0), 0);
  ASSERT_EQ(mkfifo(onHost("/tmp/votk/ipc/ntpclient").c_str(), 0600), 0);
  ASSERT_EQ(chown(onHost("/tmp/votk/ipc/ntpclient").c_str(), 12345, 12345), 0);
  EXPECT_NE(complaint().find("ntpclient: belongs to somebody else"), std::string::npos)
      << complaint();
}

// What the listener does: it opens, waiting for a writer, and reads.
int openedAndRead(const std::string& path) {
  const int pipe = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (pipe < 0) return -1;
  std::array<char, 4> value{1, 1, 1, 1};
  const ssize_t length = read(pipe, value.data(), value.size());
  close(pipe);
  return length == 4 && value == std::array<char, 4>{} ? 4 : static_cast<int>(length);
}

struct Waking : host::ListenerWaker {
  explicit Waking(const std::string& path) : ListenerWaker(path) { begin(); }
};

TEST_F(DeviceWithPipe, WakesAListenerThatWaitsInOpen) {
  const host::ReportPipe pipe;
  auto listener = std::async(std::launch::async, [&] { return openedAndRead(pipe.path()); });
  const Waking waker(pipe.path());
  EXPECT_EQ(listener.get(), 4);
}

TEST_F(DeviceWithPipe, WakesAListenerAgainAndAgain) {
  const host::ReportPipe pipe;
  const Waking waker(pipe.path());
  for (int i = 0; i < 3; ++i) {
    const int length = openedAndRead(pipe.path());
    EXPECT_TRUE(length == 4 || length == 0) << length;
  }
}

TEST_F(DeviceWithPipe, WakingLeavesNoDescriptorOpen) {
  const auto descriptors = [] {
    return std::distance(fs::directory_iterator("/proc/self/fd"), {});
  };
  const host::ReportPipe pipe;
  const auto before = descriptors();
  {
    const Waking waker(pipe.path());
    static_cast<void>(openedAndRead(pipe.path()));
  }
  EXPECT_EQ(descriptors(), before);
}

// A writer holds the pipe open, so that the listener is past the open and waits in the read.
TEST_F(DeviceWithPipe, WakesAListenerThatWaitsInRead) {
  const host::ReportPipe pipe;
  const int holder = open(pipe.path().c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(holder, 0);
  auto listener = std::async(std::launch::async, [&] { return openedAndRead(pipe.path()); });
  {
    const Waking waker(pipe.path());
    EXPECT_EQ(listener.get(), 4);
  }
  close(holder);
}

TEST_F(DeviceWithPipe, WakesNobodyWithoutHarm) {
  const host::ReportPipe pipe;
  { const Waking nobodyWaits(pipe.path()); }
  { const Waking noPipe(onHost("/none")); }
  std::ofstream(onHost("/file")) << "precious";
  { const Waking noPipe(onHost("/file")); }
  EXPECT_EQ(support::contentOf(onHost("/file")), "precious");
}

// More wakes than the pipe holds, with nobody who takes them.
TEST_F(DeviceWithPipe, DoesNotWaitForAFullPipe) {
  const host::ReportPipe pipe;
  const int holder = open(pipe.path().c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  ASSERT_GE(holder, 0);
  const std::string page(4096, 'x');
  while (write(holder, page.data(), page.size()) > 0) {
  }
  { const Waking waker(pipe.path()); }
  close(holder);
}

}  // namespace
