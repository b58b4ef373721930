#include "runtime/ListenerWaker.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <future>
#include <string>

#include "base/Descriptor.h"
#include "services/ManagementThread.h"
#include "support/FileContent.h"
#include "support/OpenDescriptors.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

namespace fs = std::filesystem;

class PipeWithListener : public testing::Test {
 protected:
  PipeWithListener() { EXPECT_EQ(mkfifo(m_pipe.c_str(), 0600), 0); }

  // As the listener does: opens the pipe, which blocks until there is a writer, and reads. Returns
  // the number of bytes read; -1 when they are not zero.
  [[nodiscard]] int openAndRead() const {
    const Descriptor pipe(open(m_pipe.c_str(), O_RDONLY | O_CLOEXEC));
    std::array<char, 4> bytes{1, 1, 1, 1};
    const ssize_t length = read(pipe.get(), bytes.data(), bytes.size());
    const auto end = bytes.begin() + std::max<ssize_t>(length, 0);
    return std::count(bytes.begin(), end, 0) == length ? static_cast<int>(length) : -1;
  }
  [[nodiscard]] Descriptor openForBoth(int flags = 0) const {
    return Descriptor(open(m_pipe.c_str(), O_RDWR | O_CLOEXEC | flags));
  }

  const support::TemporaryFolder m_folder;
  const fs::path m_pipe = m_folder / "pipe";
  ManagementThread m_thread;
};

TEST_F(PipeWithListener, IsWokenWhileItWaitsInOpen) {
  auto listener = std::async(std::launch::async, [&] { return openAndRead(); });
  const ListenerWaker waker(m_pipe, m_thread);
  EXPECT_EQ(listener.get(), 4);
}

TEST_F(PipeWithListener, IsWokenAgainAndNoDescriptorStaysOpen) {
  const auto before = support::openDescriptors();
  {
    const ListenerWaker waker(m_pipe, m_thread);
    for (int i = 0; i < 3; ++i) {
      const int length = openAndRead();
      EXPECT_TRUE(length == 4 || length == 0) << length;
    }
  }
  EXPECT_EQ(support::openDescriptors(), before);
}

// The test holds the pipe open, so that the listener gets past open() and waits in read().
TEST_F(PipeWithListener, IsWokenWhileItWaitsInRead) {
  const Descriptor writer = openForBoth();
  auto listener = std::async(std::launch::async, [&] { return openAndRead(); });
  const ListenerWaker waker(m_pipe, m_thread);
  EXPECT_EQ(listener.get(), 4);
}

TEST_F(PipeWithListener, MayBeMissingOrHaveNoListener) {
  { const ListenerWaker noListener(m_pipe, m_thread); }
  { const ListenerWaker noPipe(m_folder / "none", m_thread); }
  std::ofstream(m_folder / "file") << "precious";
  { const ListenerWaker noPipe(m_folder / "file", m_thread); }
  EXPECT_EQ(support::contentOf(m_folder / "file"), "precious");
}

TEST_F(PipeWithListener, IsNotWaitedForWhenThePipeIsFull) {
  const Descriptor holder = openForBoth(O_NONBLOCK);
  const std::string page(4096, 'x');
  while (write(holder.get(), page.data(), page.size()) > 0) continue;
  { const ListenerWaker waker(m_pipe, m_thread); }
}

bool blocksBrokenPipe() {
  sigset_t blocked;
  pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
  return sigismember(&blocked, SIGPIPE) == 1;
}

// The listener may close the pipe between the waker's open and its write, in a process that does
// not ignore SIGPIPE.
TEST_F(PipeWithListener, IsWokenByAThreadThatBlocksBrokenPipeSignals) {
  bool blocked = false;
  m_thread.run([&] { blocked = blocksBrokenPipe(); });
  EXPECT_TRUE(blocked);
}

TEST_F(PipeWithListener, LeavesTheManagementThreadToOtherTasks) {
  { const ListenerWaker waker(m_pipe, m_thread); }
  bool ran = false;
  m_thread.run([&] { ran = true; });
  EXPECT_TRUE(ran);
}

}  // namespace
}  // namespace host
