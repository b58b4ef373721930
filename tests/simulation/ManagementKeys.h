#pragma once

#include <array>

namespace simulation {

// The keys that management knows the clock by.
inline constexpr std::array kManagementKeys{
    "time",
    "simple-time",
    "simple-date",
    "date-format",
    "time-format",
    "sntp-addr",
    "ntp-secret",
    "sntp-tz-offset",
    "daylight-save",
    "daylight-save-minutes",
    "time-source",
    "daylight-save-zone-list",
    "daylight-save-zone-index",
    "daylight-save-zone-text",
    "daylight-save-zone-id",
    "auto-daylight-save",
};

}  // namespace simulation
