#include "verbs/MethodCatalogue.h"

#include <iterator>

#include "verbs/NamedRows.h"

namespace host {
namespace {

constexpr auto kInt = MethodParameter::Type::integer;
constexpr auto kText = MethodParameter::Type::text;
constexpr auto kBool = MethodParameter::Type::boolean;

constexpr MethodRow kMethods[] = {
    {"getTime", {}, {{"getTimeStringReturn", kText}}},
    {"getTimeInts",
     {},
     {{"getTimeIntsHoursReturn", kInt},
      {"getTimeIntsMinutesReturn", kInt},
      {"getTimeIntsSecondsReturn", kInt}}},
    {"getTimeUTCStr", {{"getTimeUTCStrString", kText}}, {{"getTimeUTCStrStringReturn", kText}}},
    {"getTimeUTCStrAndInts",
     {{"getTimeUTCStrAndIntsString", kText}},
     {{"getTimeUTCStrAndIntsReturn", kBool},
      {"getTimeUTCStrAndIntsHoursReturn", kInt},
      {"getTimeUTCStrAndIntsMinutesReturn", kInt},
      {"getTimeUTCStrAndIntsSecondsReturn", kInt}}},
    {"getTimeVal", {}, {{"getTimeValReturn", kInt}}},
    {"getDisplayTimeVal", {}, {{"getDisplayTimeValReturn", kInt}}},
    {"setTime",
     {{"setTimeHours", kInt}, {"setTimeMinutes", kInt}, {"setTimeSeconds", kInt}},
     {{"setTimeReturn", kBool}}},
    {"setTimeInt", {{"setTime", kInt}}, {}},  // the service uses this name on purpose
    {"getDate", {}, {{"getDateStringReturn", kText}}},
    {"getDateShort", {}, {{"getDateShortStringReturn", kText}}},
    {"getDateInts",
     {},
     {{"getDateIntsDayReturn", kInt},
      {"getDateIntsMonthReturn", kInt},
      {"getDateIntsYearReturn", kInt}}},
    {"getDateUTCStr", {{"getDateUTCStrString", kText}}, {{"getDateUTCStrStringReturn", kText}}},
    {"getDateShortUTCStr",
     {{"getDateShortUTCStrString", kText}},
     {{"getDateShortUTCStrStringReturn", kText}}},
    {"getDateUTCStrAndInts",
     {{"getDateUTCStrAndIntsString", kText}},
     {{"getDateUTCStrAndIntsReturn", kBool},
      {"getDateUTCStrAndIntsDayReturn", kInt},
      {"getDateUTCStrAndIntsMonthReturn", kInt},
      {"getDateUTCStrAndIntsYearReturn", kInt}}},
    {"setDate",
     {{"setDateDay", kInt}, {"setDateMonth", kInt}, {"setDateYear", kInt}},
     {{"setDateReturn", kBool}}},
    {"getUTCTimeTimeVal",
     {{"getUTCTimeTimeValTime", kInt}},
     {{"getUTCTimeTimeValStringReturn", kText}}},
    {"getUTCTimeInts",
     {{"getUTCTimeIntsHours", kInt},
      {"getUTCTimeIntsMins", kInt},
      {"getUTCTimeIntsSecs", kInt},
      {"getUTCTimeIntsDay", kInt},
      {"getUTCTimeIntsMonth", kInt},
      {"getUTCTimeIntsYear", kInt}},
     {{"getUTCTimeIntsStringReturn", kText}}},
    {"observeTimeEvents", {}, {{"observeTimeEventsReturn", kBool}}},
    {"unobserveTimeEvents", {}, {{"unobserveTimeEventsReturn", kBool}}},
    {"setAlarmClock", {{"setAlarmClockAlarmTime", kText}}, {{"setAlarmClockReturn", kInt}}},
    {"cancelAlarmClock", {{"cancelAlarmClockAlarmId", kInt}}, {{"cancelAlarmClockReturn", kBool}}},
    {"setFallbackTime", {}, {{"setFallbackTimeReturn", kText}}},
    {"isTimeSourceSntp", {}, {{"isTimeSourceSntpReturn", kBool}}},
};
static_assert(std::size(kMethods) == 23 && namesAreUnique(kMethods));

constexpr MethodRow kEvents[] = {
    {"timezoneChangeEvent", {{"timezoneChangeEventTimezone", kText}}, {}},
    {"timeChangeEvent",
     {{"timeChangeEventHours", kInt},
      {"timeChangeEventMinutes", kInt},
      {"timeChangeEventSeconds", kInt}},
     {}},
    {"dateChangeEvent",
     {{"dateChangeEventDay", kInt}, {"dateChangeEventMonth", kInt}, {"dateChangeEventYear", kInt}},
     {}},
    {"alarmClockEvent", {{"alarmClockEventAlarm", kInt}}, {}},
};

}  // namespace

std::span<const MethodRow> remoteMethods() {
  return kMethods;
}

std::span<const MethodRow> remoteEvents() {
  return kEvents;
}

}  // namespace host
