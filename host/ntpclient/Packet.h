#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>

namespace host::ntp {

// SNTP as of RFC 4330: packets in and out, without a socket and without a clock.
inline constexpr std::size_t kPacketSize = 48;
using Packet = std::array<std::uint8_t, kPacketSize>;

// What an answer is worth. Only `good` may set a clock.
enum class Verdict {
  good,
  wrongSender,  // not from where the request went
  tooShort,
  wrongMode,       // not a server's answer
  wrongVersion,    // not the version that was asked in
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
  std::chrono::nanoseconds processing;  // between its reception of the request and that; >= 0
};

// A request of version 4 in client mode. nonce: stands where a transmit time would, comes back in
// the answer, and tells nobody the time here. Not 0.
[[nodiscard]] Packet makeRequest(std::uint64_t nonce);

// answer: one datagram as it came, which may be longer than a packet (extensions, a MAC).
[[nodiscard]] Judgement judge(std::span<const std::uint8_t> answer, std::uint64_t nonce);

// The server's time at the moment its good answer arrived, since 1970-01-01 UTC: the way is taken
// to cost half of what the round trip did not spend in the server.
[[nodiscard]] std::chrono::nanoseconds timeAtArrival(const Judgement& good,
                                                     std::chrono::nanoseconds roundTrip);

}  // namespace host::ntp
