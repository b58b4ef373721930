#include "runtime/ClockPrivilege.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace host {
namespace {

TEST(ClockPrivilege, IsWhatTheKernelShows) {
  constexpr unsigned kSysTime = 25;  // CAP_SYS_TIME
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word && word != "CapEff:") continue;
  status >> word;
  EXPECT_EQ(maySetSystemClock(), (std::stoull(word, nullptr, 16) >> kSysTime & 1U) != 0);
}

}  // namespace
}  // namespace host
