#include "ntpclient/Packet.h"

#include <algorithm>
#include <string_view>

namespace host::ntp {
namespace {

using std::chrono::nanoseconds;
using std::chrono::seconds;

// Offsets of the fields.
constexpr std::size_t kFlags = 0;  // leap indicator (2 bits), version (3), mode (3)
constexpr std::size_t kStratum = 1;
constexpr std::size_t kRootDelay = 4;       // signed, 16.16 bits of a second
constexpr std::size_t kRootDispersion = 8;  // unsigned, 16.16 bits of a second
constexpr std::size_t kReference = 12;      // of stratum 0: the kiss code, four letters
constexpr std::size_t kOrigin = 24;         // timestamps: 32.32 bits of a second since 1900
constexpr std::size_t kReceive = 32;
constexpr std::size_t kTransmit = 40;

constexpr unsigned kVersion = 4;
constexpr unsigned kClientMode = 3;
constexpr unsigned kServerMode = 4;
constexpr unsigned kLeapAlarm = 3;
constexpr unsigned kHighestStratum = 15;
constexpr std::int32_t kOneSecond = 0x10000;

constexpr std::int64_t k1900To1970 = 2208988800;
constexpr std::int64_t kEra = std::int64_t{1} << 32;

std::uint32_t word(std::span<const std::uint8_t> packet, std::size_t at) {
  std::uint32_t number = 0;
  for (std::size_t i = at; i < at + 4; ++i) number = number << 8 | packet[i];
  return number;
}

std::uint64_t timestamp(std::span<const std::uint8_t> packet, std::size_t at) {
  return std::uint64_t{word(packet, at)} << 32 | word(packet, at + 4);
}

// With the highest bit set the timestamp is of 1968-2036, without it of 2036-2104.
nanoseconds since1970(std::uint64_t timestamp) {
  const auto whole = static_cast<std::int64_t>(timestamp >> 32);
  const std::int64_t era = whole < kEra / 2 ? kEra : 0;
  const std::uint64_t fraction = (timestamp & 0xffffffff) * 1'000'000'000 >> 32;
  return seconds(whole + era - k1900To1970) + nanoseconds(fraction);
}

Verdict kissOfDeath(std::span<const std::uint8_t> packet) {
  const std::string_view codes[] = {"DENY", "RSTR"};
  std::string code(packet.begin() + kReference, packet.begin() + kReference + 4);
  if (std::find(std::begin(codes), std::end(codes), code) != std::end(codes)) {
    return Verdict::denied;
  }
  return code == "RATE" ? Verdict::rateExceeded : Verdict::noStratum;
}

bool isFar(std::span<const std::uint8_t> packet) {
  const auto delay = static_cast<std::int32_t>(word(packet, kRootDelay));
  return delay < 0 || delay >= kOneSecond || word(packet, kRootDispersion) >= kOneSecond;
}

// Checks first that the packet answers our request: only our server may stop us with a
// kiss-of-death.
Verdict check(std::span<const std::uint8_t> packet, std::uint64_t nonce) {
  if (packet.size() < kPacketSize) return Verdict::tooShort;
  const unsigned flags = packet[kFlags];
  if ((flags & 7) != kServerMode) return Verdict::wrongMode;
  if ((flags >> 3 & 7) != kVersion) return Verdict::wrongVersion;
  if (timestamp(packet, kOrigin) != nonce) return Verdict::wrongOrigin;
  if (packet[kStratum] == 0) return kissOfDeath(packet);
  if (flags >> 6 == kLeapAlarm) return Verdict::unsynchronised;
  if (packet[kStratum] > kHighestStratum) return Verdict::wrongStratum;
  if (isFar(packet)) return Verdict::tooFar;
  return timestamp(packet, kTransmit) == 0 ? Verdict::noTime : Verdict::good;
}

}  // namespace

const char* textOf(Verdict verdict) {
  static constexpr const char* kTexts[] = {"good",
                                           "it came from another address",
                                           "too short",
                                           "not a server's answer",
                                           "not the requested version",
                                           "not an answer to this request",
                                           "the server denies service",
                                           "the server asks for fewer requests",
                                           "stratum 0",
                                           "the server's clock is not synchronised",
                                           "stratum above 15",
                                           "the server is a second or more from its reference",
                                           "no transmit time"};
  return kTexts[static_cast<std::size_t>(verdict)];
}

Packet makeRequest(std::uint64_t nonce) {
  Packet packet{};
  packet[kFlags] = kVersion << 3 | kClientMode;
  for (std::size_t i = 0; i < 8; ++i) {
    packet[kTransmit + i] = static_cast<std::uint8_t>(nonce >> (56 - 8 * i));
  }
  return packet;
}

Judgement judge(std::span<const std::uint8_t> answer, std::uint64_t nonce) {
  const Verdict verdict = check(answer, nonce);
  if (verdict != Verdict::good) return {verdict, nanoseconds(0), nanoseconds(0)};
  const nanoseconds sent = since1970(timestamp(answer, kTransmit));
  const nanoseconds received = since1970(timestamp(answer, kReceive));
  return {verdict, sent, std::max(sent - received, nanoseconds(0))};
}

nanoseconds timeAtArrival(const Judgement& good, nanoseconds roundTrip) {
  return good.sent + std::max(roundTrip - good.processing, nanoseconds(0)) / 2;
}

}  // namespace host::ntp
