#include "verbs/MethodCatalogue.h"

#include <iterator>

namespace host {
namespace {

using P = MethodParameter;
constexpr P::Type kInt = P::Type::integer;
constexpr P::Type kText = P::Type::text;
constexpr P::Type kBool = P::Type::boolean;

// Request parameters.
constexpr P kUtcForTime[] = {{"getTimeUTCStrString", kText}};
constexpr P kUtcForTimeInts[] = {{"getTimeUTCStrAndIntsString", kText}};
constexpr P kTime[] = {{"setTimeHours", kInt}, {"setTimeMinutes", kInt}, {"setTimeSeconds", kInt}};
constexpr P kSeconds[] = {{"setTime", kInt}};  // named after the method above it, on purpose
constexpr P kUtcForDate[] = {{"getDateUTCStrString", kText}};
constexpr P kUtcForShortDate[] = {{"getDateShortUTCStrString", kText}};
constexpr P kUtcForDateInts[] = {{"getDateUTCStrAndIntsString", kText}};
constexpr P kDate[] = {{"setDateDay", kInt}, {"setDateMonth", kInt}, {"setDateYear", kInt}};
constexpr P kTimeVal[] = {{"getUTCTimeTimeValTime", kInt}};
constexpr P kSixInts[] = {{"getUTCTimeIntsHours", kInt}, {"getUTCTimeIntsMins", kInt},
                          {"getUTCTimeIntsSecs", kInt},  {"getUTCTimeIntsDay", kInt},
                          {"getUTCTimeIntsMonth", kInt}, {"getUTCTimeIntsYear", kInt}};
constexpr P kAlarmTime[] = {{"setAlarmClockAlarmTime", kText}};
constexpr P kAlarmId[] = {{"cancelAlarmClockAlarmId", kInt}};

// Reply parameters.
constexpr P kTimeText[] = {{"getTimeStringReturn", kText}};
constexpr P kTimeInts[] = {{"getTimeIntsHoursReturn", kInt},
                           {"getTimeIntsMinutesReturn", kInt},
                           {"getTimeIntsSecondsReturn", kInt}};
constexpr P kUtcTimeText[] = {{"getTimeUTCStrStringReturn", kText}};
constexpr P kUtcTimeInts[] = {{"getTimeUTCStrAndIntsReturn", kBool},
                              {"getTimeUTCStrAndIntsHoursReturn", kInt},
                              {"getTimeUTCStrAndIntsMinutesReturn", kInt},
                              {"getTimeUTCStrAndIntsSecondsReturn", kInt}};
constexpr P kTimeValReply[] = {{"getTimeValReturn", kInt}};
constexpr P kDisplayTimeVal[] = {{"getDisplayTimeValReturn", kInt}};
constexpr P kTimeWasSet[] = {{"setTimeReturn", kBool}};
constexpr P kDateText[] = {{"getDateStringReturn", kText}};
constexpr P kShortDateText[] = {{"getDateShortStringReturn", kText}};
constexpr P kDateInts[] = {{"getDateIntsDayReturn", kInt},
                           {"getDateIntsMonthReturn", kInt},
                           {"getDateIntsYearReturn", kInt}};
constexpr P kUtcDateText[] = {{"getDateUTCStrStringReturn", kText}};
constexpr P kUtcShortDateText[] = {{"getDateShortUTCStrStringReturn", kText}};
constexpr P kUtcDateInts[] = {{"getDateUTCStrAndIntsReturn", kBool},
                              {"getDateUTCStrAndIntsDayReturn", kInt},
                              {"getDateUTCStrAndIntsMonthReturn", kInt},
                              {"getDateUTCStrAndIntsYearReturn", kInt}};
constexpr P kDateWasSet[] = {{"setDateReturn", kBool}};
constexpr P kUtcOfTimeVal[] = {{"getUTCTimeTimeValStringReturn", kText}};
constexpr P kUtcOfInts[] = {{"getUTCTimeIntsStringReturn", kText}};
constexpr P kObserving[] = {{"observeTimeEventsReturn", kBool}};
constexpr P kUnobserved[] = {{"unobserveTimeEventsReturn", kBool}};
constexpr P kAlarm[] = {{"setAlarmClockReturn", kInt}};
constexpr P kCancelled[] = {{"cancelAlarmClockReturn", kBool}};
constexpr P kFallback[] = {{"setFallbackTimeReturn", kText}};
constexpr P kFromSntp[] = {{"isTimeSourceSntpReturn", kBool}};

constexpr RemoteMethod kMethods[] = {
    {"getTime", {}, kTimeText, true},
    {"getTimeInts", {}, kTimeInts, true},
    {"getTimeUTCStr", kUtcForTime, kUtcTimeText, true},
    {"getTimeUTCStrAndInts", kUtcForTimeInts, kUtcTimeInts, true},
    {"getTimeVal", {}, kTimeValReply, true},
    {"getDisplayTimeVal", {}, kDisplayTimeVal, true},
    {"setTime", kTime, kTimeWasSet, true},
    {"setTimeInt", kSeconds, {}, false},
    {"getDate", {}, kDateText, true},
    {"getDateShort", {}, kShortDateText, true},
    {"getDateInts", {}, kDateInts, true},
    {"getDateUTCStr", kUtcForDate, kUtcDateText, true},
    {"getDateShortUTCStr", kUtcForShortDate, kUtcShortDateText, true},
    {"getDateUTCStrAndInts", kUtcForDateInts, kUtcDateInts, true},
    {"setDate", kDate, kDateWasSet, true},
    {"getUTCTimeTimeVal", kTimeVal, kUtcOfTimeVal, true},
    {"getUTCTimeInts", kSixInts, kUtcOfInts, true},
    {"observeTimeEvents", {}, kObserving, true},
    {"unobserveTimeEvents", {}, kUnobserved, true},
    {"setAlarmClock", kAlarmTime, kAlarm, true},
    {"cancelAlarmClock", kAlarmId, kCancelled, true},
    {"setFallbackTime", {}, kFallback, true},
    {"isTimeSourceSntp", {}, kFromSntp, true},
};
static_assert(std::size(kMethods) == 23);

constexpr P kZoneEvent[] = {{"timezoneChangeEventTimezone", kText}};
constexpr P kTimeEvent[] = {{"timeChangeEventHours", kInt},
                            {"timeChangeEventMinutes", kInt},
                            {"timeChangeEventSeconds", kInt}};
constexpr P kDateEvent[] = {
    {"dateChangeEventDay", kInt}, {"dateChangeEventMonth", kInt}, {"dateChangeEventYear", kInt}};
constexpr P kAlarmEvent[] = {{"alarmClockEventAlarm", kInt}};

constexpr RemoteMethod kEvents[] = {
    {"timezoneChangeEvent", kZoneEvent, {}, false},
    {"timeChangeEvent", kTimeEvent, {}, false},
    {"dateChangeEvent", kDateEvent, {}, false},
    {"alarmClockEvent", kAlarmEvent, {}, false},
};

}  // namespace

std::span<const RemoteMethod> remoteMethods() {
  return kMethods;
}

std::span<const RemoteMethod> remoteEvents() {
  return kEvents;
}

}  // namespace host
