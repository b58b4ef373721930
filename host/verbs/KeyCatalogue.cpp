#include "verbs/KeyCatalogue.h"

#include <iterator>

#include "verbs/NamedRows.h"

namespace host {
namespace {

constexpr std::string_view kZone = "1 ms later the zone is applied and observers are notified";
constexpr std::string_view kShown = "used from now on; observers are not notified";
constexpr std::string_view kClient =
    "the NTP client is restarted if the network is up and a server is set";

constexpr ManagementKey kKeys[] = {
    {"time", true, "now, as a UTC string",
     "an instant of the years 1970-2037, 25 characters; `clockctl set` also takes "
     "`2026-03-08T06:59:50Z` and `local 2026-03-08 01:59:50`",
     "the date and then the time are set by hand; across a daylight-saving change, set it twice",
     "2026-03-08T06:59:50+00:00"},
    {"simple-time", true, "the local time", "HH:MM, cut by position; not empty, not ???",
     "the time is set by hand, with second 0", "07:30"},
    {"simple-date", true, "the local date in the current date format",
     "a date in the current date format with a year of four digits, cut by position; not empty, "
     "not ???",
     "the date is set by hand. The daylight flag of the current time is kept, so the time moves by "
     "an hour across a daylight-saving change: in New York, at 23:30 in January, "
     "15.07.2024 becomes 16.07.2024, 00:30",
     "05.03.2026"},
    {"date-format", true, "how dates are shown",
     "0 day.month.year, 1 year-month-day, 2 month/day/year; stored unchecked", kShown, "1"},
    {"time-format", true, "how times are shown",
     "0 is the 24-hour clock, any other number the 12-hour clock; stored unchecked", kShown, "1"},
    {"sntp-addr", true, "the time server",
     "a host name or a numeric address without brackets, other than the current one",
     "the NTP client is restarted if the network is up and a server is set. Only 0.0.0.0 and :: "
     "switch the server off; an empty text is refused. The item state of time becomes 0 for an "
     "empty text, 0.0.0.0 and ::, and 4 for any other, even when the set is refused",
     "192.0.2.1"},
    {"ntp-secret", true, "the secret shared with the time server, in clear text",
     "UTF-8 text; of control characters only tab, line feed and carriage return", kClient,
     "secret"},
    {"sntp-tz-offset", true, "hours east of UTC",
     "a decimal number, not empty: -12.5 to 12.5 are hours, beyond that they are seconds", kZone,
     "-5"},
    {"daylight-save", true, "whether daylight saving is on", "true or false", kZone, "true"},
    {"daylight-save-minutes", true, "the shift of daylight saving", "minutes; stored unchecked",
     kZone, "60"},
    {"time-source", true, "where the time comes from",
     "a number; with software type Velmora QEX, 0 shows UTC instead of local time; stored "
     "unchecked",
     kZone, "1"},
    {"daylight-save-zone-list", false, "the names of the zones, each followed by a semicolon", "",
     "", ""},
    {"daylight-save-zone-index", true, "the zone, as its row in the list", "0-14",
     "as for daylight-save-zone-id; a change of that key is reported, even if it was not stored",
     "12"},
    {"daylight-save-zone-text", false, "the name of the zone", "", "", ""},
    {"daylight-save-zone-id", true, "the zone, by its identifier", "0-14", kZone, "12"},
    {"auto-daylight-save", true, "whether daylight saving follows the rule of the zone",
     "true or false", kZone, "true"},
};
static_assert(std::size(kKeys) == 16 && namesAreUnique(kKeys));

constexpr const char* kPreface =
    R"(# Management keys

The device's management reads and writes the clock's settings by key, and so do `clockctl get KEY` and
`clockctl set KEY VALUE`. All values are text. `clockctl keys` lists all keys with their item state: 0 when the
user may set the key, 4 when the device sets it.

Each set, accepted or refused, leaves a record in the [security log](security-log.md). `clockctl reset` resets
`date-format` and `time-format`, if the user has set them, to the device's defaults and reports each change.

A number ends at the first character that does not belong to it; a text that does not begin with a
number counts as 0. Stored values are UTF-8 text without control characters except tab, line feed and
carriage return; other values are refused.

This page is generated from `host/verbs/KeyCatalogue.cpp`; a test compares the two.
)";

std::string sectionOf(const ManagementKey& row) {
  std::string text = "\n## " + std::string(row.name) + "\n\n";
  text += "- get: " + std::string(row.meaning) + '\n';
  if (!row.settable) {
    return text + "- set: always refused\n- example: `clockctl get " + std::string(row.name) +
           "`\n";
  }
  text += "- set: " + std::string(row.values) + '\n';
  if (!row.effect.empty()) text += "- then: " + std::string(row.effect) + '\n';
  return text + "- example: `clockctl set " + std::string(row.name) + ' ' +
         std::string(row.example) + "`\n";
}

}  // namespace

std::span<const ManagementKey> managementKeys() {
  return kKeys;
}

std::string managementKeysDocument() {
  std::string text = kPreface;
  for (const ManagementKey& row : kKeys) text += sectionOf(row);
  return text;
}

}  // namespace host
