#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>

namespace host::ntp {

// SNTP packets (RFC 4330), without sockets and clocks.
inline constexpr std::size_t kPacketSize = 48;
using Packet = std::array<std::uint8_t, kPacketSize>;

// The result of judging an answer. Only `good` may set a clock.
enum class Verdict {
  good,
  wrongSender,  // not from where the request went
  tooShort,
  wrongMode,       // not a server's answer
  wrongVersion,    // not the version of the request
  wrongOrigin,     // not an answer to this request
  denied,          // kiss-of-death: do not come back
  rateExceeded,    // kiss-of-death: come less often
  noStratum,       // stratum 0 for another reason
  unsynchronised,  // the server's leap alarm
  wrongStratum,    // above 15
  tooFar,          // root delay or dispersion of a second or more
  noTime           // no transmit time
};

[[nodiscard]] const char* textOf(Verdict verdict);

struct Judgement {
  Verdict verdict;
  // Of a good answer, else 0:
  std::chrono::nanoseconds sent;        // by the server's clock, since 1970-01-01 UTC
  std::chrono::nanoseconds processing;  // from receiving the request to sending; not negative
};

// A request of version 4 in client mode. nonce: takes the place of the transmit time, which the
// server returns, and so does not reveal the time of this machine. Not 0.
[[nodiscard]] Packet makeRequest(std::uint64_t nonce);

// answer: one datagram, which may be longer than a packet (extensions, a MAC).
[[nodiscard]] Judgement judge(std::span<const std::uint8_t> answer, std::uint64_t nonce);

// The server's time when its good answer arrived, since 1970-01-01 UTC. Assumes that both ways take
// equally long: half of the round trip without the server's processing.
[[nodiscard]] std::chrono::nanoseconds timeAtArrival(const Judgement& good,
                                                     std::chrono::nanoseconds roundTrip);

}  // namespace host::ntp
