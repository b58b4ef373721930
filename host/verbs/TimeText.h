#pragma once

#include <chrono>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/InstantText.h"

// Durations, instants and speeds as people write them. Pure; thread: any.
namespace host {

// For error lines: the accepted forms.
inline constexpr std::string_view kDurationForms = "`90s`, `15m`, `1h30m`, `1d` or `00:30:00`";
inline constexpr std::string_view kRealDurationForms =
    "`10s`, `0.5s`, `15m`, `1h30m` or `00:30:00`";
inline constexpr std::string_view kInstantForms =
    "`2026-03-08T06:59:50Z` or `2026-03-08T06:59:50+00:00`, in the years 1970-2199";
inline constexpr std::string_view kLocalForms = "`2026-03-08 01:59:50`, in the years 1970-2199";
inline constexpr std::string_view kSpeedForms = "`0` (paused), `1`, `0.5`, `3600` or `max`";

// duration = [digits "d"] [digits "h"] [digits "m"] [digits "s"] | HH ":" MM ":" SS, up to 36525
// days (a century), not empty.
[[nodiscard]] std::optional<std::chrono::seconds> parseDuration(std::string_view text);

// exact = digits "." 1-6 digits "s", up to 36525 days.
[[nodiscard]] std::optional<std::chrono::microseconds> parseExactDuration(std::string_view text);
// Real time to wait: as parseDuration or parseExactDuration, at least a millisecond; rounded up.
[[nodiscard]] std::optional<std::chrono::milliseconds> parseRealDuration(std::string_view text);
[[nodiscard]] std::string exactDurationText(std::chrono::microseconds duration);  // "2.5s", "3.0s"

// instant = YYYY-MM-DD "T" HH:MM:SS ( "Z" | ( "+" | "-" ) HH:MM ), from 0 to kLastInstant. Seconds
// since 1970-01-01 UTC.
inline constexpr std::chrono::seconds kLastInstant{7258118399};  // the end of 2199
[[nodiscard]] std::optional<std::chrono::seconds> parseInstant(std::string_view text);

// local = YYYY-MM-DD " " HH:MM:SS, in the same years. Seconds since 1970-01-01 of that local time.
[[nodiscard]] std::optional<std::chrono::seconds> parseLocal(std::string_view text);

// The instants at which a clock under the process's TZ shows that local time, in their order: none
// if it is skipped by a change of daylight saving, two if it comes twice.
[[nodiscard]] std::vector<std::chrono::seconds> instantsOfLocal(std::chrono::seconds local);

// speed = "max" | decimal number, 0-1e9. "max" is infinity: as fast as it goes.
[[nodiscard]] std::optional<double> parseSpeed(std::string_view text);
[[nodiscard]] std::string speedText(double speed);  // "paused", "max" or the number

// As instantText, in the 25-character form, offset "+00:00".
[[nodiscard]] std::string longInstantText(std::chrono::seconds sinceEpoch);

// The same instant as a local time with that offset from UTC: "2026-03-08T01:59:50-05:00".
[[nodiscard]] std::string localInstantText(std::chrono::seconds sinceEpoch,
                                           std::chrono::seconds eastOfUtc);

// Local wall time under the process's TZ: "2026-03-08 01:59:50 (LOC, UTC-05:00)".
[[nodiscard]] std::string localText(time_t sinceEpoch);

[[nodiscard]] std::string secondsText(std::chrono::milliseconds limit);  // "0.05 s"

// "UTC-05:00"
[[nodiscard]] std::string offsetText(std::chrono::seconds eastOfUtc);

// "1d 02:03:04", without the days when there are none.
[[nodiscard]] std::string durationText(std::chrono::seconds duration);

}  // namespace host
