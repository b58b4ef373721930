#include "runtime/ClockPrivilege.h"

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "support/ErrorOf.h"
#include "support/InChild.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

constexpr std::uint64_t kSysTime = std::uint64_t{1} << 25;  // CAP_SYS_TIME
constexpr std::uint64_t kSetPcap = std::uint64_t{1} << 8;   // CAP_SETPCAP
constexpr std::uint64_t kSetGid = std::uint64_t{1} << 6;    // CAP_SETGID

// name: the name of the set, such as "CapEff".
std::uint64_t capabilities(const std::string& name, const std::string& file = "/proc/self/status") {
  std::ifstream status(file);
  std::string word;
  while (status >> word && word != name + ":") continue;
  status >> word;
  return std::stoull(word, nullptr, 16);
}

// Drops the privileges in a child process, because they cannot be regained, and returns what
// `holds` returns there.
bool afterDropping(std::optional<gid_t> group, const std::function<bool()>& holds) {
  return support::statusInChild([&] {
           gainNoPrivileges();
           keepOnlyClockPrivilege(group);
           return holds() ? 0 : 1;
         }) == 0;
}

// Installs a filter that refuses the call of gainNoPrivileges.
bool refuseNoNewPrivileges() {
  sock_filter program[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_prctl, 0, 3),
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, PR_SET_NO_NEW_PRIVS, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const sock_fprog filter = {std::size(program), program};
  return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter, 0, 0) == 0;
}

// In a child process, because a filter cannot be removed.
TEST(ClockPrivilege, RefusedNoNewPrivilegesIsAnError) {
  EXPECT_EQ(support::statusInChild([] {
              const std::string error =
                  refuseNoNewPrivileges() ? errorOf([] { gainNoPrivileges(); }) : "no filter";
              const bool right = error.find(
                                     "cannot be kept from gaining privileges: Operation not "
                                     "permitted; ") != std::string::npos;
              return right ? 0 : 1;
            }),
            0);
}

TEST(ClockPrivilege, AgreesWithTheKernel) {
  EXPECT_EQ(maySetSystemClock(), (capabilities("CapEff") & kSysTime) != 0);
}

TEST(ClockPrivilege, IsTheOnlyCapabilityThatIsKept) {
  const std::uint64_t kept = capabilities("CapEff") & kSysTime;
  for (const char* const set : {"CapEff", "CapPrm"}) {
    EXPECT_TRUE(afterDropping({}, [&] { return capabilities(set) == kept; })) << set;
  }
  for (const char* const set : {"CapInh", "CapAmb"}) {
    EXPECT_TRUE(afterDropping({}, [&] { return capabilities(set) == 0; })) << set;
  }
  const bool mayEmpty = (capabilities("CapEff") & kSetPcap) != 0;
  EXPECT_TRUE(!mayEmpty || afterDropping({}, [] { return capabilities("CapBnd") == 0; }));
}

// Programs of root do not get it either.
TEST(ClockPrivilege, IsNotPassedOnToStartedPrograms) {
  if ((capabilities("CapEff") & kSetPcap) == 0) {
    EXPECT_FALSE(maySetSystemClock())
        << "without CAP_SETPCAP the privilege cannot be kept from programs";
    return;
  }
  const support::TemporaryFolder folder;
  const std::string file = folder / "status";
  const std::string script = "cat /proc/self/status >'" + file + "'";
  EXPECT_TRUE(afterDropping({}, [&] {
    ::execl("/bin/sh", "sh", "-c", script.c_str(), nullptr);
    return false;
  }));
  EXPECT_EQ(capabilities("CapPrm", file), 0U);
  EXPECT_EQ(capabilities("CapEff", file), 0U);
}

TEST(ClockPrivilege, AllowsToGiveAFileToTheGroup) {
  const gid_t group = (capabilities("CapEff") & kSetGid) != 0 ? 12345 : ::getegid();
  const support::TemporaryFolder folder;
  EXPECT_TRUE(afterDropping(group, [&] {
    std::ofstream(folder / "file") << "text";
    return ::chown((folder / "file").c_str(), static_cast<uid_t>(-1), group) == 0;
  }));
}

}  // namespace
}  // namespace host
