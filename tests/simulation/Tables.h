#pragma once

#include <string>

namespace simulation {

// A value for the NTP server, and its kind.
struct Address {
  enum Kind { none, name, ipv4, ipv6, wrong };
  const char* text;
  Kind kind;
  const char* resolved = "";  // the address of a name; empty if it has none
};

inline constexpr Address kAddresses[] = {
    {"", Address::wrong},
    {"0.0.0.0", Address::none},
    {"::", Address::none},
    {"192.0.2.1", Address::ipv4},
    {"198.51.100.255", Address::ipv4},
    {"127.0.0.1", Address::ipv4},
    {"2001:db8::1", Address::ipv6},
    {"::1", Address::ipv6},
    {"[2001:db8::1]", Address::wrong},
    {"[::]", Address::wrong},
    {"256.0.2.1", Address::wrong},
    {"192.0.2", Address::wrong},
    {"no such host", Address::wrong},
    {"-ntp.example", Address::wrong},
    {"2001:db8:::1", Address::wrong},
    {"ntp.example", Address::name, "198.51.100.255"},
    {"timeserver", Address::name, "192.0.2.1"},
    {"far-away.ntp6.example.", Address::name, "2001:db8::1"},
    {"gone.example", Address::name},
};

// The row with this text, or the first row.
[[nodiscard]] inline const Address& addressOf(const std::string& text) {
  for (const Address& address : kAddresses)
    if (text == address.text) return address;
  return kAddresses[0];
}

// A setting: its management key (empty without one), its storage key, its default on most
// telephones, and its default on variants 2 to 4.
struct Setting {
  enum Kind { text, number, flag, address, offset, zone };
  const char* key;
  const char* stored;
  const char* byDefault;
  const char* byDefaultOnBig;
  Kind kind;
};

inline constexpr const char* kFirstSavedTime = "2016-06-16T00:00:00+00:00";

inline constexpr Setting kSettings[] = {
    {"", "FallbackDateTime", kFirstSavedTime, kFirstSavedTime, Setting::text},
    {"date-format", "DateFormat", "0", "2", Setting::number},
    {"time-format", "TimeFormat", "0", "1", Setting::number},
    {"sntp-addr", "SNTPaddress", "", "", Setting::address},
    {"ntp-secret", "NTPsharedSecret", "", "", Setting::text},
    {"sntp-tz-offset", "TimezoneOffset", "0", "0", Setting::offset},
    {"daylight-save", "DaylightSavingActive", "false", "true", Setting::flag},
    {"daylight-save-minutes", "DaylightSavingMinutes", "60", "60", Setting::number},
    {"time-source", "QexTimeSource", "0", "0", Setting::number},
    {"daylight-save-zone-id", "DaylightSavingZoneIDDevice", "0", "12", Setting::zone},
    {"auto-daylight-save", "AutoDaylightSavingEnabledDevice", "false", "true", Setting::flag},
};

// The name of each zone, each followed by ";".
inline constexpr const char* kZoneNames =
    "Not Set;Australia 2007 (ACT, South Australia, Tasmania, Victoria);"
    "Australia 2007 (New South Wales);Australia (Western Australia);"
    "Australia 2008+ (ACT, New South Wales, South Australia, Tasmania, Victoria);Brazil;Canada;"
    "Canada (Newfoundland);Europe (Portugal, United Kingdom);"
    "Europe (Austria, Belgium, Croatia, Denmark, France, Germany, Hungary, Italy, Luxembourg, "
    "Netherlands, Norway, Poland, Slovakia, Spain, Sweden, Switzerland);Europe (Finland);Mexico;"
    "United States;New Zealand;New Zealand (Chatham);";
inline constexpr int kZones = 15;

// Begin and end of daylight saving: the Sunday of a month (1: the first, 5: the last), and the
// time.
struct ZoneRule {
  struct Change {
    int month, week, hour, minute;
  } begin, end;
};

// Zones 1 to 14.
inline constexpr ZoneRule kZoneRules[kZones - 1] = {
    {{10, 5, 2, 0}, {4, 1, 3, 0}}, {{10, 5, 2, 0}, {3, 5, 3, 0}},  {{10, 5, 2, 0}, {3, 5, 3, 0}},
    {{10, 1, 2, 0}, {4, 1, 3, 0}}, {{10, 3, 0, 0}, {2, 3, 0, 0}},  {{3, 2, 2, 0}, {11, 1, 2, 0}},
    {{3, 2, 0, 0}, {11, 1, 0, 0}}, {{3, 5, 1, 0}, {10, 5, 2, 0}},  {{3, 5, 2, 0}, {10, 5, 3, 0}},
    {{3, 5, 3, 0}, {10, 5, 4, 0}}, {{4, 1, 2, 0}, {10, 5, 2, 0}},  {{3, 2, 2, 0}, {11, 1, 2, 0}},
    {{9, 5, 2, 0}, {4, 1, 3, 0}},  {{9, 5, 2, 45}, {4, 1, 3, 45}},
};

}  // namespace simulation
