#include "RemoteMethods.h"

#include <array>

#include "ClockServiceIfc.h"
#include "ClockServiceObserverIfc.h"
#include "FrameworkContext.h"
#include "InvokerResponse.h"
#include "Method.h"
#include "Proxy.h"
#include "UniqueNames.h"

namespace {

// The interface name of observer proxies in the framework.
const std::string kObserverInterface = "ClockServiceObserverIfc";

bool readText(const RemoteCall& call, const char* name, std::string& value) {
  return call.request.getStringParameter(name, value, Parameter::in);
}

bool readNumber(const RemoteCall& call, const char* name, int& value) {
  return call.request.getIntParameter(name, value, Parameter::in);
}

void reply(RemoteCall& call, const char* name, const std::string& value) {
  call.reply.addStringParameter(name, value, Parameter::out);
}

void reply(RemoteCall& call, const char* name, int value) {
  call.reply.addIntParameter(name, value, Parameter::out);
}

void reply(RemoteCall& call, const char* name, bool value) {
  call.reply.addBoolParameter(name, value, Parameter::out);
}

// The caller as an observer, or null when the framework has no such proxy. The framework owns it.
ClockServiceObserverIfc* callersProxy(RemoteCall& call) {
  return dynamic_cast<ClockServiceObserverIfc*>(
      call.context.createProxy(kObserverInterface, call.response.getReplyAddress()));
}

void getTime(RemoteCall& call) {
  reply(call, "getTimeStringReturn", call.service.getTime());
}

void getTimeInts(RemoteCall& call) {
  int hours = 0, minutes = 0, seconds = 0;
  call.service.getTime(hours, minutes, seconds);
  reply(call, "getTimeIntsHoursReturn", hours);
  reply(call, "getTimeIntsMinutesReturn", minutes);
  reply(call, "getTimeIntsSecondsReturn", seconds);
}

void getTimeUtcString(RemoteCall& call) {
  std::string utc;
  if (readText(call, "getTimeUTCStrString", utc))
    reply(call, "getTimeUTCStrStringReturn", call.service.getTime(utc));
}

void getTimeUtcStringAndInts(RemoteCall& call) {
  std::string utc;
  if (!readText(call, "getTimeUTCStrAndIntsString", utc)) return;
  int hours = 0, minutes = 0, seconds = 0;
  reply(call, "getTimeUTCStrAndIntsReturn", call.service.getTime(utc, hours, minutes, seconds));
  reply(call, "getTimeUTCStrAndIntsHoursReturn", hours);
  reply(call, "getTimeUTCStrAndIntsMinutesReturn", minutes);
  reply(call, "getTimeUTCStrAndIntsSecondsReturn", seconds);
}

void getTimeVal(RemoteCall& call) {
  reply(call, "getTimeValReturn", call.service.getTimeVal());
}

void getDisplayTimeVal(RemoteCall& call) {
  reply(call, "getDisplayTimeValReturn", call.service.getDisplayTimeVal());
}

void setTime(RemoteCall& call) {
  int hours = 0, minutes = 0, seconds = 0;
  const bool set =
      readNumber(call, "setTimeHours", hours) && readNumber(call, "setTimeMinutes", minutes) &&
      readNumber(call, "setTimeSeconds", seconds) && call.service.setTime(hours, minutes, seconds);
  reply(call, "setTimeReturn", set);
}

// The parameter is named after setTime, not after this method; peers are built against it.
void setTimeInt(RemoteCall& call) {
  int secondsSinceEpoch = 0;
  if (readNumber(call, "setTime", secondsSinceEpoch)) call.service.setTime(secondsSinceEpoch);
}

void getDate(RemoteCall& call) {
  reply(call, "getDateStringReturn", call.service.getDate());
}

void getDateShort(RemoteCall& call) {
  reply(call, "getDateShortStringReturn", call.service.getDateShort());
}

void getDateInts(RemoteCall& call) {
  int day = 0, month = 0, year = 0;
  call.service.getDate(day, month, year);
  reply(call, "getDateIntsDayReturn", day);
  reply(call, "getDateIntsMonthReturn", month);
  reply(call, "getDateIntsYearReturn", year);
}

void getDateUtcString(RemoteCall& call) {
  std::string utc;
  if (readText(call, "getDateUTCStrString", utc))
    reply(call, "getDateUTCStrStringReturn", call.service.getDate(utc));
}

void getDateShortUtcString(RemoteCall& call) {
  std::string utc;
  if (readText(call, "getDateShortUTCStrString", utc))
    reply(call, "getDateShortUTCStrStringReturn", call.service.getDateShort(utc));
}

void getDateUtcStringAndInts(RemoteCall& call) {
  std::string utc;
  if (!readText(call, "getDateUTCStrAndIntsString", utc)) return;
  int day = 0, month = 0, year = 0;
  reply(call, "getDateUTCStrAndIntsReturn", call.service.getDate(utc, day, month, year));
  reply(call, "getDateUTCStrAndIntsDayReturn", day);
  reply(call, "getDateUTCStrAndIntsMonthReturn", month);
  reply(call, "getDateUTCStrAndIntsYearReturn", year);
}

void setDate(RemoteCall& call) {
  int day = 0, month = 0, year = 0;
  const bool set = readNumber(call, "setDateDay", day) && readNumber(call, "setDateMonth", month) &&
                   readNumber(call, "setDateYear", year) && call.service.setDate(day, month, year);
  reply(call, "setDateReturn", set);
}

void getUtcTimeTimeVal(RemoteCall& call) {
  int seconds = 0;
  if (readNumber(call, "getUTCTimeTimeValTime", seconds))
    reply(call, "getUTCTimeTimeValStringReturn", call.service.getUTCTime(seconds));
}

void getUtcTimeInts(RemoteCall& call) {
  int hours = 0, minutes = 0, seconds = 0, day = 0, month = 0, year = 0;
  std::string utc;
  if (readNumber(call, "getUTCTimeIntsHours", hours) &&
      readNumber(call, "getUTCTimeIntsMins", minutes) &&
      readNumber(call, "getUTCTimeIntsSecs", seconds) &&
      readNumber(call, "getUTCTimeIntsDay", day) &&
      readNumber(call, "getUTCTimeIntsMonth", month) &&
      readNumber(call, "getUTCTimeIntsYear", year))
    utc = call.service.getUTCTime(hours, minutes, seconds, day, month, year);
  reply(call, "getUTCTimeIntsStringReturn", utc);
}

void observeTimeEvents(RemoteCall& call) {
  reply(call, "observeTimeEventsReturn", call.service.observeTimeEvents(callersProxy(call)));
}

void unobserveTimeEvents(RemoteCall& call) {
  reply(call, "unobserveTimeEventsReturn", call.service.unobserveTimeEvents(callersProxy(call)));
}

void setAlarmClock(RemoteCall& call) {
  ClockServiceObserverIfc* const observer = callersProxy(call);  // before the time is read
  std::string alarmTime;
  if (readText(call, "setAlarmClockAlarmTime", alarmTime))
    reply(call, "setAlarmClockReturn", call.service.setAlarmClock(alarmTime, observer));
}

void cancelAlarmClock(RemoteCall& call) {
  int alarmId = 0;
  const bool cancelled = readNumber(call, "cancelAlarmClockAlarmId", alarmId) &&
                         call.service.cancelAlarmClock(alarmId);
  reply(call, "cancelAlarmClockReturn", cancelled);
}

void setFallbackTime(RemoteCall& call) {
  reply(call, "setFallbackTimeReturn", call.service.setFallbackTime());
}

void isTimeSourceSntp(RemoteCall& call) {
  reply(call, "isTimeSourceSntpReturn", call.service.isTimeSourceSntp());
}

// The clock's whole remote protocol. Peers are built against these names and this order.
constexpr std::array<RemoteMethod, 23> kRemoteMethods{{
    {"getTime", true, getTime},
    {"getTimeInts", true, getTimeInts},
    {"getTimeUTCStr", true, getTimeUtcString},
    {"getTimeUTCStrAndInts", true, getTimeUtcStringAndInts},
    {"getTimeVal", true, getTimeVal},
    {"getDisplayTimeVal", true, getDisplayTimeVal},
    {"setTime", true, setTime},
    {"setTimeInt", false, setTimeInt},  // never replies, by design
    {"getDate", true, getDate},
    {"getDateShort", true, getDateShort},
    {"getDateInts", true, getDateInts},
    {"getDateUTCStr", true, getDateUtcString},
    {"getDateShortUTCStr", true, getDateShortUtcString},
    {"getDateUTCStrAndInts", true, getDateUtcStringAndInts},
    {"setDate", true, setDate},
    {"getUTCTimeTimeVal", true, getUtcTimeTimeVal},
    {"getUTCTimeInts", true, getUtcTimeInts},
    {"observeTimeEvents", true, observeTimeEvents},
    {"unobserveTimeEvents", true, unobserveTimeEvents},
    {"setAlarmClock", true, setAlarmClock},
    {"cancelAlarmClock", true, cancelAlarmClock},
    {"setFallbackTime", true, setFallbackTime},
    {"isTimeSourceSntp", true, isTimeSourceSntp},
}};

static_assert(kRemoteMethods.size() == 23 && namesAreUnique(kRemoteMethods));

}  // namespace

const RemoteMethod* findRemoteMethod(const std::string& name) {
  for (const RemoteMethod& method : kRemoteMethods)
    if (name == method.name) return &method;
  return nullptr;
}
