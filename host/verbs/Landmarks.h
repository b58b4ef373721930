#pragma once

#include <chrono>
#include <ctime>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// Instants at which something happens, such as the next local midnight: `clock to` stops just
// before one. Pure but for the process's TZ; thread: any.
namespace host {

struct Landmark {
  std::string_view name;     // as typed: "leap-day"
  std::string_view meaning;  // "the next leap day"
  // For a refusal: what was not found, to be followed by the local time it was not found after, and
  // what to do.
  std::string_view missing;
  std::string_view remedy;
  // The first such instant after `after`.
  std::optional<time_t> (*next)(time_t after);
};

[[nodiscard]] std::span<const Landmark> landmarks();

// For a refusal: "hour, midnight, dst, leap-day or 2038".
[[nodiscard]] std::string landmarkNames();

// How long before the landmark `clock to` stops.
inline constexpr std::chrono::seconds kJumpMargin{10};

// The first such instant that lies more than kJumpMargin after `now`, local time under the
// process's TZ; seconds since 1970-01-01 UTC. Empty when there is none: no change to or from
// daylight saving within two years, or 2038 is over.
[[nodiscard]] std::optional<time_t> nextLandmark(const Landmark& landmark, time_t now);

}  // namespace host
