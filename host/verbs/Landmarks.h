#pragma once

#include <chrono>
#include <ctime>
#include <optional>
#include <span>
#include <string_view>

// The instants that are worth standing just before. Pure but for the process's TZ; thread: any.
namespace host {

enum class Landmark { hour, midnight, dst, leapDay, year2038 };

struct LandmarkName {
  std::string_view name;  // as typed: "leap-day"
  Landmark landmark;
  std::string_view meaning;  // "the next leap day"
  // Of a refusal: what was looked for and how far, before the time from which on; what to do.
  std::string_view missing;
  std::string_view remedy;
};

[[nodiscard]] std::span<const LandmarkName> landmarkNames();
[[nodiscard]] const LandmarkName* findLandmark(std::string_view name);  // null: unknown

// How long before the landmark a ready-made jump stops.
inline constexpr std::chrono::seconds kJumpMargin{10};

// The first such instant that lies more than kJumpMargin after `now`, local time under the
// process's TZ; seconds since 1970-01-01 UTC. Nothing when there is none: no daylight saving within
// two years, or 2038 is over.
[[nodiscard]] std::optional<time_t> nextLandmark(Landmark landmark, time_t now);

}  // namespace host
