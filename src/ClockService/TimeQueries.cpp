#include <sys/sysinfo.h>

#include <ctime>
#include <stdexcept>

#include "ClockService.h"
#include "ClockServiceDataHandler.h"
#include "ClockUtils.h"
#include "DisplayText.h"
#include "LocalTime.h"
#include "Log.h"
#include "Saturate.h"

namespace {

constexpr int kSoftwareTypeQex = 2;

}  // namespace

time_t ClockService::getTimeValInternal() const {
  return m_userTimeSet ? getUserTime() : time(nullptr);
}

std::int32_t ClockService::getUptime() const {
  struct sysinfo info {};
  sysinfo(&info);
  return saturate<std::int32_t>(info.uptime);
}

std::int32_t ClockService::getUserTime() const {
  return saturatedSum(getUptime(), m_userTimeOffset);
}

int ClockService::getTimeVal() {
  return saturate<int>(getTimeValInternal());
}

int ClockService::getDisplayTimeVal() {
  tm local = localTime(getTimeValInternal());
  return saturate<int>(timegm(&local));
}

void ClockService::getTime(int& hours, int& minutes, int& seconds) {
  getTimeInternal(hours, minutes, seconds);
}

void ClockService::getTimeInternal(int& hours, int& minutes, int& seconds) const {
  const time_t now = getTimeValInternal();
  CLOCK_LOG(logInformation, "getTimeInternal -> timeNow: %ld", static_cast<long>(now));
  const tm local = localTime(now);
  hours = local.tm_hour;
  minutes = local.tm_min;
  seconds = local.tm_sec;
  CLOCK_LOG(logInformation, "getTimeInternal -> hours: %d, minutes: %d, seconds: %d", hours,
            minutes, seconds);
}

void ClockService::getDate(int& day, int& month, int& year) {
  const tm local = localTime(getTimeValInternal());
  day = local.tm_mday;
  month = local.tm_mon + 1;
  year = local.tm_year + kEpochYearOfTm;
}

std::string ClockService::getTime() {
  int hours = 0, minutes = 0, seconds = 0;
  getTimeInternal(hours, minutes, seconds);
  return DisplayText::time(hours, minutes, timeFormat());
}

std::string ClockService::getDate() {
  int day = 0, month = 0, year = 0;
  getDate(day, month, year);
  return DisplayText::date(day, month, year, dateFormat());
}

std::string ClockService::getDateShort() {
  int day = 0, month = 0, year = 0;
  getDate(day, month, year);
  return DisplayText::shortDate(day, month, dateFormat());
}

std::string ClockService::getUTCTime(int secondsSinceEpoch) {
  const time_t seconds = secondsSinceEpoch != 0 ? secondsSinceEpoch : getTimeValInternal();
  tm utc{};
  gmtime_r(&seconds, &utc);
  std::string text;
  ClockUtils::convertTimeStructToTimeString(utc, text);
  return text;
}

// Callers pass the month as 1-12 and the year as years since 1900, so only the month is converted.
std::string ClockService::getUTCTime(int hours, int minutes, int seconds, int day, int month,
                                     int year) {
  tm utc{};
  utc.tm_hour = hours;
  utc.tm_min = minutes;
  utc.tm_sec = seconds;
  utc.tm_mday = day;
  utc.tm_mon = saturatedSum(month, -1);
  utc.tm_year = year;
  std::string text;
  ClockUtils::convertTimeStructToTimeString(utc, text);
  return text;
}

// m_localOffsetMinutes does not include the daylight saving of a TZ rule. The daylight flag of the
// record is 0, so mktime adds it. A text that does not parse gives a zeroed record.
bool ClockService::localTimeOf(const std::string& utc, tm& local) const {
  local = tm{};
  const bool parsed = ClockUtils::convertTimeStringToTimeStruct(utc, local);
  local.tm_min = saturatedSum(local.tm_min, m_localOffsetMinutes);
  mktime(&local);
  return parsed;
}

bool ClockService::getDate(const std::string& utc, int& day, int& month, int& year) {
  tm local{};
  if (!localTimeOf(utc, local)) return false;
  day = local.tm_mday;
  month = saturatedSum(local.tm_mon, 1);
  year = saturatedSum(local.tm_year, kEpochYearOfTm);
  return true;
}

bool ClockService::getTime(const std::string& utc, int& hours, int& minutes, int& seconds) {
  tm local{};
  if (!localTimeOf(utc, local)) return false;
  hours = local.tm_hour;
  minutes = local.tm_min;
  seconds = local.tm_sec;
  return true;
}

std::string ClockService::getTime(const std::string& utc) {
  tm local{};
  localTimeOf(utc, local);
  return DisplayText::time(local.tm_hour, local.tm_min, timeFormat());
}

std::string ClockService::getDate(const std::string& utc) {
  int day = 0, month = 0, year = 0;
  getDate(utc, day, month, year);
  return DisplayText::date(day, month, year, dateFormat());
}

std::string ClockService::getDateShort(const std::string& utc) {
  int day = 0, month = 0, year = 0;
  getDate(utc, day, month, year);
  return DisplayText::shortDate(day, month, dateFormat());
}

// Declared, but not implemented. Peers know the error: the C++ library throws it for a string built
// from a null pointer.
std::string ClockService::convertUtcStringToLocalString(const std::string& /*utc*/) {
  throw std::logic_error("basic_string: construction from null is not valid");
}

bool ClockService::timezoneEnabled() const {
  if (m_dataHandler == nullptr || m_dataHandler->getSoftwareType() != kSoftwareTypeQex) return true;
  return m_dataHandler->getTimeSource() != 0;
}

int ClockService::dateFormat() const {
  return m_dataHandler != nullptr ? m_dataHandler->getDateFormat() : 0;
}

int ClockService::timeFormat() const {
  return m_dataHandler != nullptr ? m_dataHandler->getTimeFormat() : 0;
}
