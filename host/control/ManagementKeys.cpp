#include "control/ManagementKeys.h"

#include <algorithm>
#include <array>

namespace host {
namespace {

constexpr ManagementKey kKeys[] = {
    {"time", true, "an instant of years 1970-2037, 25 characters", "2026-03-08T06:59:50+00:00"},
    {"simple-time", true, "local time HH:MM", "07:30"},
    {"simple-date", true, "local date in the present date format, four-digit year", "05.03.2026"},
    {"date-format", true, "0 day.month.year, 1 year-month-day, 2 month/day/year", "1"},
    {"time-format", true, "0 24-hour, otherwise 12-hour", "1"},
    {"sntp-addr", true, "a host name or a numeric address without brackets, other than the present",
     "192.0.2.1"},
    {"ntp-secret", true, "any text", "secret"},
    {"sntp-tz-offset", true, "hours east of UTC, -12.5 to 12.5; beyond that, seconds", "-5"},
    {"daylight-save", true, "true or false", "true"},
    {"daylight-save-minutes", true, "minutes", "60"},
    {"time-source", true, "a number; 0 switches local time off on the QEX software type", "1"},
    {"daylight-save-zone-list", false, "", ""},
    {"daylight-save-zone-index", true, "a row of daylight-save-zone-list, 0-14", "12"},
    {"daylight-save-zone-text", false, "", ""},
    {"daylight-save-zone-id", true, "a zone id, 0-14", "12"},
    {"auto-daylight-save", true, "true or false", "true"},
};
static_assert(std::size(kKeys) == 16);

constexpr auto kNames = [] {
  std::array<std::string_view, std::size(kKeys)> names{};
  std::transform(std::begin(kKeys), std::end(kKeys), names.begin(),
                 [](const ManagementKey& key) { return key.key; });
  return names;
}();

}  // namespace

std::span<const ManagementKey> managementKeys() {
  return kKeys;
}
std::span<const std::string_view> managementKeyNames() {
  return kNames;
}

const ManagementKey* findManagementKey(std::string_view key) {
  const auto found = std::find_if(std::begin(kKeys), std::end(kKeys),
                                  [&](const ManagementKey& row) { return row.key == key; });
  return found == std::end(kKeys) ? nullptr : &*found;
}

}  // namespace host
