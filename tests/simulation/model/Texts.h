#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "simulation/model/Civil.h"

namespace simulation {

// printf into a text of any length.
[[nodiscard]] std::string print(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Display of a time of day (format 0: 24 hours) and of a date (formats 0-2).
[[nodiscard]] std::string timeText(std::int64_t hour, std::int64_t minute, int format);
[[nodiscard]] std::string dateText(const Civil& date, int format);
[[nodiscard]] std::string shortDateText(const Civil& date, int format);
[[nodiscard]] std::string fullDateText(const Civil& date, int format);  // with all of the year

// The 25-character UTC text of an instant, and back.
[[nodiscard]] std::string utcText(std::int64_t instant);
[[nodiscard]] std::optional<std::int64_t> instantOfUtcText(const std::string& text);

// The leading decimal number of a text: 0 without one, the nearest 32-bit number when too large.
[[nodiscard]] int leadingNumber(const std::string& text);

// Anything, kept within 32 bits.
[[nodiscard]] int within32(std::int64_t number);

}  // namespace simulation
