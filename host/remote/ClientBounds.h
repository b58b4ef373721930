#pragma once

#include <chrono>
#include <cstddef>

// What one client may have of the host at once, so that the others do not wait for it. What comes
// beyond the first two stays in the client's own socket: it is read when there is room again.
namespace host {

// Control requests without their answer. More than a script has use for; few enough that all of
// them together hold up the management thread for less than a second.
inline constexpr std::size_t kMostOpenRequests = 64;

// Bytes of answers that the client has not read. Below Outbox::kMaxQueued by more than the largest
// usual answer, so that a client that is slow to read answers is not dropped.
inline constexpr std::size_t kMostUnread = 256 * 1024;

// Registrations of one client as an observer. One brings all events; a process whose parts observe
// each for itself over one connection has a few. Each event is sent as often.
inline constexpr std::size_t kMostRegistrations = 8;

// Registrations of all clients together, beyond the first of each, which no other client can take
// away. With kMostClients they bound the messages of one event.
inline constexpr std::size_t kMostFurtherRegistrations = 1'000;

// Clients at once, calling: ten thousand, as they are measured with, and some. Each takes a
// descriptor. A process has often fewer, and keeps some for files, children, pipes, and for those
// who control it: more than anybody starts at once.
inline constexpr std::size_t kMostClients = 10'100;
inline constexpr std::size_t kMostControlClients = 100;
inline constexpr std::size_t kOwnDescriptors = kMostControlClients + 64;

// One user, neither root nor the host's own, has at most one of so many equal shares of them: at
// the socket of calls one user of its group does not shut out the others, who have the other half.
inline constexpr std::size_t kUserSharesOfClients = 2;

// How many the process has descriptors for, at its present limit.
[[nodiscard]] std::size_t clientsWithDescriptors();

// What a client may have handled as soon as it is read, without waiting for a turn: enough for one
// who waits for answers. However many clients send more together, one of them has a turn at a time.
inline constexpr std::size_t kFramesAtOnce = 4;

// One turn of a client on the loop: as many frames as these, or as long, whichever ends first. It
// ends after a frame, so one frame is always handled.
inline constexpr std::size_t kFramesInTurn = 64;
inline constexpr std::chrono::milliseconds kTurn{1};

}  // namespace host
