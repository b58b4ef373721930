#pragma once

#include <chrono>
#include <ctime>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// Instants at which something happens, such as the next local midnight. `clock to` stops just
// before one. Depends on the process's TZ and nothing else. Thread: any.
namespace host {

struct Landmark {
  std::string_view name;     // as typed: "leap-day"
  std::string_view meaning;  // "the next leap day"
  std::string_view missing;  // for a refusal: what was not found; a local time follows
  std::string_view remedy;   // for a refusal: what to do
  // The first instant of this landmark after `after`.
  std::optional<time_t> (*next)(time_t after);
};

[[nodiscard]] std::span<const Landmark> landmarks();

// How long before the landmark `clock to` stops.
inline constexpr std::chrono::seconds kJumpMargin{10};

// The first instant of the landmark that lies more than kJumpMargin after `now`, in the local time
// of the process's TZ. Both are seconds since 1970-01-01 UTC. Empty when there is none, such as no
// change to or from daylight saving within two years.
[[nodiscard]] std::optional<time_t> nextLandmark(const Landmark& landmark, time_t now);

}  // namespace host
