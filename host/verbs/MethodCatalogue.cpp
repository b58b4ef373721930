#include "verbs/MethodCatalogue.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <iterator>

#include "verbs/NamedRows.h"

namespace host {
namespace {

constexpr auto kInt = MethodParameter::Type::integer;
constexpr auto kText = MethodParameter::Type::text;
constexpr auto kBool = MethodParameter::Type::boolean;

constexpr std::string_view kInstant = "25 characters, as 2026-03-08T06:59:50+00:00";
constexpr std::string_view kInstantExample = "2026-03-08T06:59:50+00:00";

// At most six parameters.
struct WideParameters {
  constexpr WideParameters(std::initializer_list<MethodParameter> list) : size(list.size()) {
    std::copy(list.begin(), list.end(), all.begin());
  }

  std::array<MethodParameter, 6> all{};
  std::size_t size;
};

// A row as it is written in this file, and not stored: with all its empty parameters, which the
// loader would relocate at each start.
struct WideRow {
  std::string_view name;
  std::string_view meaning;
  WideParameters request;
  WideParameters reply;
};

// What is stored of such rows.
template <const auto& kWideRows>
struct Stored {
  static constexpr std::size_t kParameterCount = [] {
    std::size_t count = 0;
    for (const WideRow& wide : kWideRows) count += wide.request.size + wide.reply.size;
    return count;
  }();

  static constexpr auto kParameters = [] {
    std::array<MethodParameter, kParameterCount> parameters;
    auto end = parameters.begin();
    for (const WideRow& wide : kWideRows) {
      for (const WideParameters* each : {&wide.request, &wide.reply}) {
        end = std::copy_n(each->all.begin(), each->size, end);
      }
    }
    return parameters;
  }();

  static constexpr auto kRows = [] {
    std::array<MethodRow, std::size(kWideRows)> rows;
    MethodParameters left = kParameters;
    auto row = rows.begin();
    for (const WideRow& wide : kWideRows) {
      *row++ = {wide.name, wide.meaning, left.first(wide.request.size),
                left.subspan(wide.request.size, wide.reply.size)};
      left = left.subspan(wide.request.size + wide.reply.size);
    }
    return rows;
  }();
};

// clang-format off
constexpr WideRow kMethods[] = {
    {"getTime", "returns the displayed time", {}, {{"getTimeStringReturn", kText}}},
    {"getTimeInts", "returns the local time", {},
     {{"getTimeIntsHoursReturn", kInt},
      {"getTimeIntsMinutesReturn", kInt},
      {"getTimeIntsSecondsReturn", kInt}}},
    {"getTimeUTCStr", "returns the local time of an instant, as it would be displayed",
     {{"getTimeUTCStrString", kText, kInstant, kInstantExample}},
     {{"getTimeUTCStrStringReturn", kText}}},
    {"getTimeUTCStrAndInts", "returns the local time of an instant; false for another text",
     {{"getTimeUTCStrAndIntsString", kText, kInstant, kInstantExample}},
     {{"getTimeUTCStrAndIntsReturn", kBool},
      {"getTimeUTCStrAndIntsHoursReturn", kInt},
      {"getTimeUTCStrAndIntsMinutesReturn", kInt},
      {"getTimeUTCStrAndIntsSecondsReturn", kInt}}},
    {"getTimeVal", "returns the time in seconds since 1970-01-01 UTC", {},
     {{"getTimeValReturn", kInt}}},
    {"getDisplayTimeVal", "returns the local time in seconds, as if it were UTC", {},
     {{"getDisplayTimeValReturn", kInt}}},
    {"setTime", "sets the local time by hand",
     {{"setTimeHours", kInt, "0-23, unchecked", "7"},
      {"setTimeMinutes", kInt, "0-59, unchecked", "30"},
      {"setTimeSeconds", kInt, "0-59, unchecked", "0"}},
     {{"setTimeReturn", kBool}}},
    {"setTimeInt", "sets the system time, unless a time server is configured; no setting by hand",
     {{"setTime", kInt, "seconds since 1970-01-01 UTC", "1772953190"}},  // its name, on purpose
     {}},
    {"getDate", "returns the displayed date", {}, {{"getDateStringReturn", kText}}},
    {"getDateShort", "returns the displayed date without the year", {},
     {{"getDateShortStringReturn", kText}}},
    {"getDateInts", "returns the local date", {},
     {{"getDateIntsDayReturn", kInt},
      {"getDateIntsMonthReturn", kInt},
      {"getDateIntsYearReturn", kInt}}},
    {"getDateUTCStr", "returns the local date of an instant, as it would be displayed",
     {{"getDateUTCStrString", kText, kInstant, kInstantExample}},
     {{"getDateUTCStrStringReturn", kText}}},
    {"getDateShortUTCStr", "returns the local date of an instant, as it would be displayed, without the year",
     {{"getDateShortUTCStrString", kText, kInstant, kInstantExample}},
     {{"getDateShortUTCStrStringReturn", kText}}},
    {"getDateUTCStrAndInts", "returns the local date of an instant; false for another text",
     {{"getDateUTCStrAndIntsString", kText, kInstant, kInstantExample}},
     {{"getDateUTCStrAndIntsReturn", kBool},
      {"getDateUTCStrAndIntsDayReturn", kInt},
      {"getDateUTCStrAndIntsMonthReturn", kInt},
      {"getDateUTCStrAndIntsYearReturn", kInt}}},
    {"setDate", "sets the local date by hand; false for another year",
     {{"setDateDay", kInt, "1-31, unchecked", "8"},
      {"setDateMonth", kInt, "1-12, unchecked", "3"},
      {"setDateYear", kInt, "1970-2037, or 0-37 for 2000-2037", "2026"}},
     {{"setDateReturn", kBool}}},
    {"getUTCTimeTimeVal", "returns an instant as a text of 25 characters",
     {{"getUTCTimeTimeValTime", kInt, "seconds since 1970-01-01 UTC; 0 is now", "1772953190"}},
     {{"getUTCTimeTimeValStringReturn", kText}}},
    {"getUTCTimeInts", "returns a UTC time and date as a text of 25 characters; the numbers are unchecked",
     {{"getUTCTimeIntsHours", kInt, "0-23", "6"},
      {"getUTCTimeIntsMins", kInt, "0-59", "59"},
      {"getUTCTimeIntsSecs", kInt, "0-59", "50"},
      {"getUTCTimeIntsDay", kInt, "1-31", "8"},
      {"getUTCTimeIntsMonth", kInt, "1-12", "3"},
      {"getUTCTimeIntsYear", kInt, "the year minus 1900: 126 is 2026", "126"}},
     {{"getUTCTimeIntsStringReturn", kText}}},
    {"observeTimeEvents", "registers the caller as an observer of the events", {},
     {{"observeTimeEventsReturn", kBool}}},
    {"unobserveTimeEvents", "removes one registration of the caller; false if there is none", {},
     {{"unobserveTimeEventsReturn", kBool}}},
    {"setAlarmClock", "does nothing, as alarms are not implemented; returns 0",
     {{"setAlarmClockAlarmTime", kText, "any text", "07:30"}},
     {{"setAlarmClockReturn", kInt}}},
    {"cancelAlarmClock", "does nothing, as alarms are not implemented; returns false",
     {{"cancelAlarmClockAlarmId", kInt, "any number", "0"}},
     {{"cancelAlarmClockReturn", kBool}}},
    {"setFallbackTime", "saves the system time, as the service does every 12 hours, and returns it",
     {}, {{"setFallbackTimeReturn", kText}}},
    {"isTimeSourceSntp", "returns whether the time server has set the time", {},
     {{"isTimeSourceSntpReturn", kBool}}},
};
static_assert(std::size(kMethods) == 23 && namesAreUnique(kMethods));

constexpr WideRow kEvents[] = {
    {"timezoneChangeEvent", "zone change",
     {{"timezoneChangeEventTimezone", kText, "a POSIX TZ value",
       "LOC05:00DST04:00,M3.2.0/02:00,M11.1.0/02:00"}},
     {}},
    {"timeChangeEvent", "full hour, time set, NTP report, zone change",
     {{"timeChangeEventHours", kInt, "0-23", "3"},
      {"timeChangeEventMinutes", kInt, "0-59", "0"},
      {"timeChangeEventSeconds", kInt, "0-59", "0"}},
     {}},
    {"dateChangeEvent",
     "local midnight, time or date set, NTP report, zone change, a full hour whose date was not "
     "announced yet",
     {{"dateChangeEventDay", kInt, "1-31", "8"},
      {"dateChangeEventMonth", kInt, "1-12", "3"},
      {"dateChangeEventYear", kInt, "four digits", "2026"}},
     {}},
    {"alarmClockEvent", "never raised", {{"alarmClockEventAlarm", kInt, "any number", "0"}}, {}},
};
// clang-format on

}  // namespace

std::span<const MethodRow> remoteMethods() {
  return Stored<kMethods>::kRows;
}

std::span<const MethodRow> remoteEvents() {
  return Stored<kEvents>::kRows;
}

std::string_view typeName(MethodParameter::Type type) {
  constexpr std::string_view kNames[] = {"int", "string", "bool"};  // as in Type
  return kNames[static_cast<std::size_t>(type)];
}

}  // namespace host
