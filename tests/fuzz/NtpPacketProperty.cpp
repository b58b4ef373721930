// The answer of a time server, real or forged: only a packet that is good in every field yields a
// time.

#include "fuzz/Property.h"
#include "ntpclient/Packet.h"

namespace {

using fuzz::hold;
using std::chrono::nanoseconds;
using std::chrono::seconds;
namespace ntp = host::ntp;

constexpr std::uint64_t kNonce = 0x4E6F6E6365313233;  // "Nonce123", which the corpus uses

std::uint64_t bigEndian(std::string_view bytes, std::size_t at, std::size_t count) {
  std::uint64_t number = 0;
  for (const char c : bytes.substr(at, count)) number = number << 8 | static_cast<unsigned char>(c);
  return number;
}

// Checks each field by the protocol's rules, without the reason that a verdict gives.
bool isGood(std::string_view packet) {
  if (packet.size() < ntp::kPacketSize) return false;
  const std::uint64_t flags = bigEndian(packet, 0, 1);
  const std::uint64_t stratum = bigEndian(packet, 1, 1);
  return flags % 8 == 4 && flags / 8 % 8 == 4 && flags / 64 != 3 && stratum >= 1 && stratum <= 15 &&
         bigEndian(packet, 4, 4) < 0x10000 && bigEndian(packet, 8, 4) < 0x10000 &&
         bigEndian(packet, 24, 8) == kNonce && bigEndian(packet, 40, 8) != 0;
}

// The whole seconds since 1970 of an NTP timestamp, in the years 1968 to 2104.
std::int64_t secondsOf(std::uint64_t timestamp) {
  const auto whole = static_cast<std::int64_t>(timestamp >> 32);
  return whole - 2208988800 + (whole < (std::int64_t{1} << 31) ? std::int64_t{1} << 32 : 0);
}

void holdTime(const ntp::Judgement& good, std::string_view packet) {
  hold(std::chrono::floor<seconds>(good.sent).count() == secondsOf(bigEndian(packet, 40, 8)),
       "the time is the server's transmit time", packet);
  hold(good.processing >= nanoseconds(0), "the server's processing time is not negative", packet);
  for (const nanoseconds trip : {nanoseconds(0), nanoseconds(1), nanoseconds(seconds(5))}) {
    const nanoseconds arrival = ntp::timeAtArrival(good, trip);
    hold(arrival >= good.sent && arrival <= good.sent + trip / 2,
         "the way back takes at most half of the round trip", packet);
  }
}

}  // namespace

void fuzz::property(std::string_view input) {
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(input.data());
  const ntp::Judgement judgement = ntp::judge({bytes, input.size()}, kNonce);
  const bool good = judgement.verdict == ntp::Verdict::good;
  hold(good == isGood(input), "a packet is good if every field is", input);
  hold(isShortLine(ntp::textOf(judgement.verdict)), "a verdict is one line");
  if (good) return holdTime(judgement, input);
  hold(judgement.sent == nanoseconds(0) && judgement.processing == nanoseconds(0),
       "a packet that is not good yields no time", input);
}
