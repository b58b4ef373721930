#include "ntpclient/ParentWatch.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

namespace host::ntp {
namespace {

using namespace std::chrono_literals;

TEST(ParentWatch, WatchesTheProcessAndNotTheThreadThatStartedIt) {
  int ready[2];
  ASSERT_EQ(::pipe(ready), 0);
  pid_t child = -1;
  std::thread([&] {
    child = ::fork();
    if (child == 0) {
      const ParentWatch watch;
      const bool written = ::write(ready[1], "r", 1) == 1;
      const auto event = watch.wait(std::chrono::steady_clock::now() + 100ms);
      ::_exit(written && event == ParentWatch::Event::timeout ? 0 : 1);
    }
    char byte;
    EXPECT_EQ(::read(ready[0], &byte, 1), 1);
  }).join();
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  for (const int end : ready) ::close(end);
}

}  // namespace
}  // namespace host::ntp
