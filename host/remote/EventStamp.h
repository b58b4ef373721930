#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <optional>
#include <string_view>

namespace host {

// The telephone's time when an event is sent, as a client of timed events receives it.
struct EventStamp {
  std::chrono::seconds utc{0};     // since 1970-01-01, as the telephone shows it
  std::chrono::seconds offset{0};  // of local time from UTC; east is positive
};

// On the wire, before the encoded event: i64 utc | i32 offset, big-endian.
inline constexpr std::size_t kEventStampSize = 12;
using EventStampBytes = std::array<char, kEventStampSize>;

// What the process's clock shows now, under the process's TZ. Without a clock: the machine's time.
// Makes no system call and takes no memory. Thread: any.
[[nodiscard]] EventStamp eventStampNow();

[[nodiscard]] EventStampBytes encodeEventStamp(EventStamp time);

// From the begin of a payload. Empty when it is too short, or holds no time that a clock can show.
[[nodiscard]] std::optional<EventStamp> decodeEventStamp(std::string_view payload);

}  // namespace host
