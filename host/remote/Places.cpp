#include "remote/Places.h"

#include <algorithm>
#include <string>

#include "base/Error.h"
#include "remote/ClientBounds.h"

namespace host {
namespace {

constexpr uid_t kRoot = 0;

}  // namespace

Places::Place Places::take(uid_t user, std::size_t most) {
  require(user, most);
  ++m_takenBy[user];
  ++m_taken;
  return {this, [user](Places* places) { places->leave(user); }};
}

void Places::require(uid_t user, std::size_t most) const {
  if (m_taken >= most) {
    throw Error(std::to_string(most) + " clients are connected, which is the most");
  }
  if (user == kRoot || user == m_own) return;
  const std::size_t share = std::max<std::size_t>(1, most / kUserSharesOfClients);
  const auto found = m_takenBy.find(user);
  if (found == m_takenBy.end() || found->second < share) return;
  throw Error(std::to_string(share) + " clients of uid " + std::to_string(user) +
              " are connected, which is the most of one user");
}

void Places::leave(uid_t user) {
  --m_taken;
  const auto found = m_takenBy.find(user);
  if (--found->second == 0) m_takenBy.erase(found);
}

}  // namespace host
