#include "remote/EventStamp.h"

#include <algorithm>
#include <cstdint>
#include <ctime>

#include "base/InstantText.h"
#include "clock/VirtualClock.h"

namespace host {
namespace {

using std::chrono::floor;
using std::chrono::seconds;

constexpr std::size_t kUtcSize = 8;
constexpr seconds kLastShown = floor<seconds>(VirtualClock::Nanoseconds::max());

void putBigEndian(char* to, std::size_t size, std::uint64_t number) {
  for (std::size_t i = size; i > 0; --i, number >>= 8U) to[i - 1] = static_cast<char>(number);
}

std::uint64_t getBigEndian(std::string_view bytes) {
  std::uint64_t number = 0;
  for (const char byte : bytes) number = number << 8U | static_cast<unsigned char>(byte);
  return number;
}

}  // namespace

EventStamp eventStampNow() {
  const VirtualClock* const clock = processClock();
  const seconds utc =
      clock == nullptr ? seconds(std::time(nullptr)) : floor<seconds>(clock->shown());
  return {utc, offsetAt(utc)};
}

EventStampBytes encodeEventStamp(EventStamp time) {
  EventStampBytes bytes{};
  putBigEndian(bytes.data(), kUtcSize, static_cast<std::uint64_t>(time.utc.count()));
  putBigEndian(bytes.data() + kUtcSize, kEventStampSize - kUtcSize,
               static_cast<std::uint64_t>(time.offset.count()));
  return bytes;
}

std::optional<EventStamp> decodeEventStamp(std::string_view payload) {
  if (payload.size() < kEventStampSize) return std::nullopt;
  const auto utc = static_cast<std::int64_t>(getBigEndian(payload.substr(0, kUtcSize)));
  if (utc < 0 || utc > kLastShown.count()) return std::nullopt;
  const auto offset = static_cast<std::uint32_t>(
      getBigEndian(payload.substr(kUtcSize, kEventStampSize - kUtcSize)));
  return EventStamp{seconds(utc), seconds(static_cast<std::int32_t>(offset))};
}

}  // namespace host
