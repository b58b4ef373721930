#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <map>
#include <memory>

// What one client may use of the host, so that the others do not wait for it. Beyond the first two
// limits the host stops reading the client's socket until answers are sent or read. See also
// Outbox::kMaxQueued and Registrations.
namespace host {

// Control requests without an answer. More than a script needs; few enough that all of them
// together delay the management thread for less than a second.
inline constexpr std::size_t kMostOpenRequests = 64;

// Bytes of answers that the client has not read. Below Outbox::kMaxQueued by more than the largest
// usual answer, so that a client that is slow to read answers is not dropped.
inline constexpr std::size_t kMostUnread = 256 * 1024;

// Registrations of one client as an observer. One is enough for all events; a process whose parts
// register separately over one connection has a few. Each registration gets each event.
inline constexpr std::size_t kMostRegistrations = 8;

// Registrations of all clients together, beyond the first of each, which no other client can use
// up. With kMostClients they bound the messages of one event.
inline constexpr std::size_t kMostFurtherRegistrations = 1'000;

// Frames of a client that are handled as soon as they are read, without waiting for a turn: enough
// for a client that waits for answers. Clients that send more take turns, one at a time. While no
// client waits for a turn, the only client that has sent, or the one that had the last turn, gets a
// full turn at once.
inline constexpr std::size_t kFramesAtOnce = 4;

// The length of one turn of a client on the loop, in frames or time, whichever ends first. At least
// one frame is handled.
inline constexpr std::size_t kFramesInTurn = 64;
inline constexpr std::chrono::milliseconds kTurn{1};

// Connected clients at the call socket: far more than a telephone has processes. Bounds the memory
// of all clients and the messages of one event. Each takes a descriptor.
inline constexpr std::size_t kMostClients = 10'100;
inline constexpr std::size_t kMostControlClients = 100;

// Reserved for files, children, pipes and control clients: more than are open at once.
inline constexpr std::size_t kOwnDescriptors = kMostControlClients + 64;

// A user other than root and the host's own gets at most one of so many equal shares, so that one
// user of the group cannot lock the others out of the call socket.
inline constexpr std::size_t kUserSharesOfClients = 2;

// How many clients the process has descriptors for, at its current limit.
[[nodiscard]] std::size_t clientsWithDescriptors();

// Counts the clients connected at one socket, and refuses those beyond the limits. Owner: the
// server. Thread: the loop's.
class ConnectionLimit {
 public:
  // Counts as one client until it is destroyed. REQUIRES: the ConnectionLimit outlives it.
  using Slot = std::shared_ptr<const ConnectionLimit>;

  // own: the host's user.
  explicit ConnectionLimit(uid_t own = ::geteuid()) : m_own(own) {}

  // Throws host::Error with the reason when `most` clients are connected, or the user's share.
  [[nodiscard]] Slot take(uid_t user, std::size_t most);

 private:
  void require(uid_t user, std::size_t most) const;
  void release(uid_t user);

  const uid_t m_own;
  std::size_t m_connected = 0;
  std::map<uid_t, std::size_t> m_connectedOf;  // each user
};

}  // namespace host
