#pragma once

#include <sys/types.h>

#include <cstddef>
#include <map>
#include <memory>

namespace host {

// Limits the clients at one socket: all together, and each user other than root and the host's own
// (ClientBounds.h). Owner: the server. Thread: the loop's.
class Places {
 public:
  // One client's place; its destruction frees it. REQUIRES: the Places outlive it.
  using Place = std::shared_ptr<const Places>;

  explicit Places(uid_t own) : m_own(own) {}

  // Throws host::Error with the reason when `most` places are taken, or the user's share of them.
  [[nodiscard]] Place take(uid_t user, std::size_t most);

 private:
  void require(uid_t user, std::size_t most) const;
  void leave(uid_t user);

  const uid_t m_own;
  std::size_t m_taken = 0;
  std::map<uid_t, std::size_t> m_takenBy;
};

}  // namespace host
