#include "remote/ClientLimits.h"

#include <sys/resource.h>

#include <algorithm>
#include <string>

#include "base/Error.h"

namespace host {
namespace {

constexpr uid_t kRoot = 0;

}  // namespace

std::size_t clientsWithDescriptors() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return kMostClients;
  return limit.rlim_cur > kOwnDescriptors ? limit.rlim_cur - kOwnDescriptors : 1;
}

ConnectionLimit::Slot ConnectionLimit::take(uid_t user, std::size_t most) {
  require(user, most);
  ++m_connectedOf[user];
  ++m_connected;
  return {this, [user](ConnectionLimit* limit) { limit->release(user); }};
}

void ConnectionLimit::require(uid_t user, std::size_t most) const {
  if (m_connected >= most) {
    throw Error(std::to_string(most) + " clients are connected, which is the limit");
  }
  if (user == kRoot || user == m_own) return;
  const std::size_t share = std::max<std::size_t>(1, most / kUserSharesOfClients);
  const auto found = m_connectedOf.find(user);
  if (found == m_connectedOf.end() || found->second < share) return;
  throw Error(std::to_string(share) + " clients of uid " + std::to_string(user) +
              " are connected, which is the limit of one user");
}

void ConnectionLimit::release(uid_t user) {
  --m_connected;
  const auto found = m_connectedOf.find(user);
  if (--found->second == 0) m_connectedOf.erase(found);
}

}  // namespace host
