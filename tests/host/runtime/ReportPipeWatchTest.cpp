// A report pipe that is deleted or replaced while the host runs.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <optional>
#include <string>

#include "base/Error.h"
#include "interpose/DeviceRoot.h"
#include "runtime/ReportPipe.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"
#include "support/WaitingCall.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kReplaced = "was deleted or replaced; it is recreated";

class WatchedPipe : public testing::Test {
 protected:
  WatchedPipe() {
    host::setDeviceRoot(m_folder.path());
    m_pipe.emplace();
    m_watch = m_pipe->watch();
  }
  ~WatchedPipe() override { host::setDeviceRoot(""); }

  [[nodiscard]] fs::path onHost(const std::string& path) const {
    return m_folder.path().string() + path;
  }
  [[nodiscard]] bool isReadable() const {
    pollfd waiting{m_watch, POLLIN, 0};
    return poll(&waiting, 1, 0) == 1;
  }
  [[nodiscard]] bool isPipe() const {
    struct stat status {};
    return lstat(m_pipe->path().c_str(), &status) == 0 && status.st_mode == (S_IFIFO | 0600);
  }

  // The change is noticed and repaired once, and a listener of the old pipe wakes.
  void expectRepaired(const std::function<void()>& change) {
    const host::Descriptor former(open(m_pipe->path().c_str(), O_PATH | O_CLOEXEC));
    const std::string formerPath = "/proc/self/fd/" + std::to_string(former.get());
    auto listener = std::async(std::launch::async, [&] { return readOnce(formerPath); });
    m_log.clear();
    EXPECT_FALSE(isReadable());
    change();
    EXPECT_TRUE(isReadable());
    while (isReadable()) m_pipe->restore();
    EXPECT_TRUE(isPipe());
    EXPECT_EQ(m_log.entries().size(), 1U) << m_log.text();
    EXPECT_TRUE(m_log.hasPart(kReplaced)) << m_log.text();
    EXPECT_EQ(listener.get(), std::string(4, '\0'));
    struct stat held {};
    struct stat found {};
    ASSERT_EQ(stat(m_pipe->heldPath().c_str(), &held), 0);
    ASSERT_EQ(lstat(m_pipe->path().c_str(), &found), 0);
    EXPECT_EQ(held.st_ino, found.st_ino);
  }

  // As the listener does: it opens, waiting for a writer, and reads.
  static std::string readOnce(const std::string& path) {
    const host::Descriptor pipe(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    std::array<char, 4> value{};
    const ssize_t length = read(pipe.get(), value.data(), value.size());
    return length < 0 ? "nothing" : std::string(value.data(), static_cast<std::size_t>(length));
  }

  const support::TemporaryFolder m_folder;
  support::LogCapture m_log;
  std::optional<host::ReportPipe> m_pipe;
  int m_watch = -1;
};

// The pipe has no room for the four zero bytes that wake its listener, and restore() does not wait.
TEST_F(WatchedPipe, IsReplacedWhenItIsFull) {
  const host::Descriptor full(open(m_pipe->path().c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
  const std::string much(64 * 1024, 'x');
  while (write(full.get(), much.data(), much.size()) > 0) continue;
  fs::remove(m_pipe->path());
  while (isReadable()) m_pipe->restore();
  EXPECT_TRUE(isPipe());
}

// The host's loop calls restore(), which must not throw.
TEST_F(WatchedPipe, FailureToInspectItIsLogged) {
  const std::string held = m_pipe->heldPath();
  const int taken = std::stoi(held.substr(held.rfind('/') + 1));
  const host::Descriptor kept(::dup(taken));
  ASSERT_EQ(::close(taken), 0);
  EXPECT_NO_THROW(m_pipe->restore());
  EXPECT_TRUE(m_log.hasPart("not recreated: ")) << m_log.text();
  EXPECT_EQ(::dup2(kept.get(), taken), taken);
}

TEST_F(WatchedPipe, IsReplacedEachTimeItIsDeletedOrMoved) {
  ASSERT_EQ(mkfifo(onHost("/other").c_str(), 0666), 0);
  const std::function<void()> changes[] = {
      [this] { fs::remove(m_pipe->path()); },
      [this] { fs::rename(m_pipe->path(), onHost("/moved")); },
      [this] { fs::rename(onHost("/other"), m_pipe->path()); },
      [this] { fs::remove_all(onHost("/tmp")); },
      [this] { fs::rename(onHost("/tmp/votk"), onHost("/moved folder")); },
      [this] { fs::remove_all(onHost("/tmp/votk/ipc")); },
  };
  for (const auto& change : changes) expectRepaired(change);
  fs::remove_all(onHost("/moved folder"));
  EXPECT_FALSE(isReadable()) << "what was moved away is no longer watched";
}

TEST_F(WatchedPipe, IgnoresReportsAndOtherFiles) {
  m_pipe->restore();  // nothing to do
  const host::Descriptor pipe(open(m_pipe->path().c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
  ASSERT_EQ(write(pipe.get(), "1234", 4), 4);
  std::ofstream(onHost("/tmp/votk/another")) << "x";
  fs::remove(onHost("/tmp/votk/another"));
  EXPECT_FALSE(isReadable());
  EXPECT_EQ(m_log.text(), "");
}

TEST_F(WatchedPipe, StaysLockedWhenItIsReplaced) {
  for (const char* const gone : {"/tmp/votk/ipc/ntpclient", "/tmp/votk/ipc"}) {
    fs::remove_all(onHost(gone));
    m_pipe->restore();
    EXPECT_THROW(const host::ReportPipe second, host::Error) << gone;
  }
}

// The device root is usually in the state folder.
TEST_F(WatchedPipe, DoesNotRecreateTheStateFolder) {
  m_pipe.reset();
  host::setDeviceRoot(m_folder / "state/device");
  m_pipe.emplace();
  m_watch = m_pipe->watch();
  fs::remove_all(m_folder / "state/device");
  EXPECT_TRUE(isReadable());
  m_pipe->restore();
  EXPECT_TRUE(isPipe());
  fs::remove_all(m_folder / "state");
  EXPECT_TRUE(isReadable());
  m_pipe->restore();
  EXPECT_FALSE(fs::exists(m_folder / "state"));
  EXPECT_TRUE(m_log.hasPart("not recreated")) << m_log.text();
}

TEST_F(WatchedPipe, IsReplacedWhenItWasDeletedBeforeItIsWatched) {
  m_pipe.reset();
  m_pipe.emplace();
  fs::remove(m_pipe->path());
  m_watch = m_pipe->watch();
  EXPECT_TRUE(isPipe());
  EXPECT_TRUE(m_log.hasPart("was deleted or replaced; it is recreated")) << m_log.text();
}

TEST_F(WatchedPipe, ListenerThatOpensTheOldPipeLateDoesNotBlock) {
  const host::Descriptor former(open(m_pipe->path().c_str(), O_PATH | O_CLOEXEC));
  fs::remove(m_pipe->path());
  m_pipe->restore();
  EXPECT_EQ(readOnce("/proc/self/fd/" + std::to_string(former.get())), std::string(4, '\0'));
}

// Opens the pipe as the plug-in does, without waiting for a writer.
ino_t inodeOpenedByTheDevice() {
  const host::Descriptor pipe(open(host::kReportPipePath, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat opened {};
  struct stat seen {};
  EXPECT_EQ(fstat(pipe.get(), &opened), 0);
  EXPECT_EQ(stat(host::kReportPipePath, &seen), 0);
  EXPECT_EQ(opened.st_ino, seen.st_ino);
  return opened.st_ino;
}

// A listener in another pipe would be woken neither by restore() nor at shutdown.
TEST_F(WatchedPipe, IsOpenedByTheDeviceWhateverIsAtThePath) {
  struct stat held {};
  ASSERT_EQ(stat(m_pipe->heldPath().c_str(), &held), 0);
  EXPECT_EQ(inodeOpenedByTheDevice(), held.st_ino);
  fs::remove(m_pipe->path());
  EXPECT_EQ(inodeOpenedByTheDevice(), held.st_ino);
  std::ofstream(m_pipe->path()) << "precious";
  EXPECT_EQ(inodeOpenedByTheDevice(), held.st_ino);
  fs::remove(m_pipe->path());
  ASSERT_EQ(mkfifo(m_pipe->path().c_str(), 0600), 0);
  EXPECT_EQ(inodeOpenedByTheDevice(), held.st_ino);
  m_pipe->restore();
  ASSERT_EQ(stat(m_pipe->path().c_str(), &held), 0);
  EXPECT_EQ(inodeOpenedByTheDevice(), held.st_ino);
}

TEST_F(WatchedPipe, IsNotOpenedByTheDeviceAfterItsDestruction) {
  m_pipe.reset();
  fs::remove(onHost(host::kReportPipePath));
  std::ofstream(onHost(host::kReportPipePath)) << "another";
  struct stat seen {};
  ASSERT_EQ(stat(host::kReportPipePath, &seen), 0);
  EXPECT_TRUE(S_ISREG(seen.st_mode));
}

// The listener opens the pipe while a pipe that the host did not create is at the path.
TEST_F(WatchedPipe, ListenerThatOpensItDuringAReplacementGetsTheNextReport) {
  fs::remove(m_pipe->path());
  ASSERT_EQ(mkfifo(m_pipe->path().c_str(), 0600), 0);
  std::string first;
  std::string second;
  {
    const support::WaitingCall listener([&] {
      first = readOnce(host::kReportPipePath);
      second = readOnce(host::kReportPipePath);
    });
    EXPECT_TRUE(listener.waits());
    fs::remove(m_pipe->path());
    m_pipe->restore();
    const host::Descriptor writer(open(m_pipe->path().c_str(), O_WRONLY | O_CLOEXEC));
    EXPECT_EQ(write(writer.get(), "1234", 4), 4);
  }
  EXPECT_EQ(first, std::string(4, '\0'));
  EXPECT_EQ(second, "1234");
}

TEST_F(WatchedPipe, FileInItsPlaceIsLoggedAndReplacedOnceItIsRemoved) {
  std::ofstream(onHost("/file")) << "precious";
  fs::rename(onHost("/file"), m_pipe->path());
  EXPECT_TRUE(isReadable());
  m_pipe->restore();
  EXPECT_TRUE(m_log.hasPart("is not a named pipe; remove it")) << m_log.text();
  EXPECT_EQ(m_log.entries().size(), 1U) << m_log.text();
  EXPECT_FALSE(isReadable()) << "nothing has changed since";
  fs::remove(m_pipe->path());
  EXPECT_TRUE(isReadable());
  m_pipe->restore();
  EXPECT_TRUE(isPipe());
  EXPECT_TRUE(m_log.hasPart(kReplaced)) << m_log.text();
}

}  // namespace
