#include "runtime/ClockPrivilege.h"

#include <grp.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "base/Error.h"

namespace host {
namespace {

using Capabilities = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;

constexpr std::size_t kWord = CAP_SYS_TIME / 32;
constexpr std::uint32_t kBit = 1U << (CAP_SYS_TIME % 32);

// call: SYS_capget or SYS_capset.
bool callWith(long call, Capabilities& capabilities) {
  __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
  return ::syscall(call, &header, capabilities.data()) == 0;
}

void join(gid_t group) {
  std::vector<gid_t> groups(static_cast<std::size_t>(std::max(::getgroups(0, nullptr), 0)));
  groups.resize(static_cast<std::size_t>(
      std::max(::getgroups(static_cast<int>(groups.size()), groups.data()), 0)));
  groups.push_back(group);
  static_cast<void>(::setgroups(groups.size(), groups.data()));
}

// The bounding set limits the capabilities of started programs. A process that may not change the
// set lacks CAP_SETPCAP; PR_SET_NO_NEW_PRIVS then limits its programs to its own capabilities.
void emptyBoundingSet() {
  for (int number = 0; ::prctl(PR_CAPBSET_READ, number, 0, 0, 0) >= 0; ++number) {
    ::prctl(PR_CAPBSET_DROP, number, 0, 0, 0);
  }
  ::prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0);
}

}  // namespace

bool maySetSystemClock() {
  Capabilities capabilities{};
  return callWith(SYS_capget, capabilities) && (capabilities[kWord].effective & kBit) != 0;
}

void gainNoPrivileges() {
  if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0) return;
  throw Error(
      std::string("programs that the host starts cannot be kept from gaining privileges: ") +
      std::strerror(errno) + "; the kernel must allow prctl(PR_SET_NO_NEW_PRIVS)");
}

void keepOnlyClockPrivilege(std::optional<gid_t> group) {
  const std::uint32_t kept = maySetSystemClock() ? kBit : 0;
  if (group) join(*group);
  emptyBoundingSet();
  Capabilities capabilities{};
  capabilities[kWord].effective = kept;
  capabilities[kWord].permitted = kept;
  if (!callWith(SYS_capset, capabilities)) {
    throw Error(std::string("cannot drop the other privileges: ") + std::strerror(errno));
  }
}

}  // namespace host
