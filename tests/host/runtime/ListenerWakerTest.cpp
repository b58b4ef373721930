#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>

#include "runtime/ListenerWaker.h"
#include "support/Becomes.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

bool blocksBrokenPipe(const std::filesystem::path& task) {
  std::ifstream status(task / "status");
  std::string word;
  while (status >> word && word != "SigBlk:") continue;
  status >> word;
  return (std::stoull(word, nullptr, 16) >> (SIGPIPE - 1) & 1U) != 0;
}

// A sanitizer may have such a thread of its own.
int threadsThatBlockBrokenPipe() {
  int count = 0;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    if (blocksBrokenPipe(task.path())) ++count;
  }
  return count;
}

// It may find the pipe's reader gone between its open and its write, in a process that has not
// turned the signal off.
TEST(ListenerWaker, BrokenPipeDoesNotReachTheProcess) {
  const support::TemporaryFolder folder;
  const int before = threadsThatBlockBrokenPipe();
  const ListenerWaker waker(folder / "pipe");
  EXPECT_TRUE(support::becomesTrue([=] { return threadsThatBlockBrokenPipe() != before; }));
}

}  // namespace
}  // namespace host
