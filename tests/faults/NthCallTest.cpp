// The n-th call fails, for n = 1, 2, 3 ... until a workload has fewer than n calls.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <ostream>
#include <regex>

#include "faults/PlanFile.h"
#include "faults/Workload.h"

namespace faults {

// A call that is made to fail, and what the log then says.
struct FaultPoint {
  const char* name;
  Call call;
  int error;                     // errno
  const char* logged;            // a regular expression that a line of the log matches
  bool quietAtShutdown = false;  // a failure during the shutdown is not logged
};

void PrintTo(const FaultPoint& point, std::ostream* out) {
  *out << point.name;
}

namespace {

// The calls whose failure a telephone must survive.
constexpr const char* kStore = "store \"[^\"]*\"";
constexpr const char* kScript = "storage \"setupTZ.sh\" cannot be ";
// A client of the time server has a thread that waits for its end.
constexpr const char* kThread =
    "cannot start (\"|the )|no thread for it|Thread couldn't be started";

// clang-format off
constexpr FaultPoint kPoints[] = {
    {"store open",      Call::storeOpen,      EMFILE, kStore},
    {"store read",      Call::storeRead,      EIO,    kStore},
    {"store write",     Call::storeWrite,     ENOSPC, kStore},
    {"store sync",      Call::storeSync,      EIO,    kStore},
    {"script open",     Call::scriptOpen,     EMFILE, kScript},
    {"script write",    Call::scriptWrite,    ENOSPC, kScript},
    {"script sync",     Call::scriptSync,     EIO,    kScript},
    {"script rename",   Call::scriptRename,   EIO,    kScript},
    {"spawn",           Call::spawn,          EAGAIN, "cannot start \"[^\"]*\""},
    {"thread creation", Call::threadCreation, EAGAIN, kThread},
    {"pipe open",       Call::pipeOpen,       EMFILE, "Cannot open .*ntpclient|report pipe", true},
    {"pipe read",       Call::pipeRead,       EIO,    "Read failed", true},
    {"accept",          Call::accept,         ENOBUFS, "cannot accept clients"},
    {"accept, full",    Call::accept,         EMFILE, "client turned away"},
    {"send",            Call::send,           ENOBUFS, "client [0-9]+ .*dropped"},
};
// clang-format on

class NthCallFails : public ::testing::TestWithParam<FaultPoint> {
 protected:
  // True when there was an n-th call.
  static bool runWithFailure(const FaultPoint& point, std::uint64_t nth) {
    Workload workload;
    PlanFile plan(workload.host().folder() / "plan");
    plan.arm(point.call, point.error, nth);
    workload.run(plan);
    const bool failed = plan.disarm();
    workload.checkState();
    EXPECT_EQ(workload.complaints(), std::vector<std::string>{});
    expectInTheLog(point, workload, failed);
    if (::testing::Test::HasFailure()) std::printf("the log:\n%s", workload.log().c_str());
    return failed;
  }

 private:
  // The log reports a failure if, and only if, there was one.
  static void expectInTheLog(const FaultPoint& point, const Workload& workload, bool failed) {
    if (failed && point.quietAtShutdown && workload.failedAtShutdown()) return;
    EXPECT_EQ(std::regex_search(workload.log(), std::regex(point.logged)), failed)
        << "the log of a workload " << (failed ? "with" : "without") << " a failure";
  }
};

TEST_P(NthCallFails, AndNothingAcknowledgedIsLost) {
  std::uint64_t nth = 1;
  while (!HasFailure()) {
    SCOPED_TRACE(std::string(GetParam().name) + " number " + std::to_string(nth));
    if (!runWithFailure(GetParam(), nth)) break;
    ++nth;
  }
  std::printf("%s: each of %llu failed once\n", GetParam().name,
              static_cast<unsigned long long>(nth - 1));
  EXPECT_GT(nth, 1U) << "the workload has no such call";
}

std::string testName(const ::testing::TestParamInfo<FaultPoint>& info) {
  std::string name = info.param.name;
  std::erase_if(name, [](char letter) { return letter == ' ' || letter == ','; });
  return name;
}

INSTANTIATE_TEST_SUITE_P(Each, NthCallFails, ::testing::ValuesIn(kPoints), testName);

}  // namespace
}  // namespace faults
