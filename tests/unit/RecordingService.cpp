#include "unit/RecordingService.h"

#include <initializer_list>

namespace {

std::string joined(std::initializer_list<int> numbers) {
  std::string text;
  for (const int number : numbers) text += " " + std::to_string(number);
  return text;
}

}  // namespace

namespace unit {

// Three numbers in a row.
bool RecordingService::fill(int& a, int& b, int& c, int first) const {
  if (!m_accepts) return false;
  a = first;
  b = first + 1;
  c = first + 2;
  return true;
}

void RecordingService::keepObserver(const std::string& call, ClockServiceObserverIfc* observer) {
  m_lastObserver = observer;
  keep(call + (observer != nullptr ? " observer" : " null"));
}

std::string RecordingService::getTime() {
  keep("getTime");
  return m_timeText;
}

void RecordingService::getTime(int& hours, int& minutes, int& seconds) {
  keep("getTime numbers");
  fill(hours, minutes, seconds, 1);
}

std::string RecordingService::getTime(const std::string& utc) {
  keep("getTime \"" + utc + "\"");
  return "10:08";
}

bool RecordingService::getTime(const std::string& utc, int& hours, int& minutes, int& seconds) {
  keep("getTime numbers \"" + utc + "\"");
  return fill(hours, minutes, seconds, 11);
}

int RecordingService::getTimeVal() {
  keep("getTimeVal");
  return 1800000001;
}

int RecordingService::getDisplayTimeVal() {
  keep("getDisplayTimeVal");
  return 1800003602;
}

bool RecordingService::setTime(int hours, int minutes, int seconds) {
  keep("setTime" + joined({hours, minutes, seconds}));
  return m_accepts;
}

void RecordingService::setTime(int secondsSinceEpoch) {
  keep("setTime epoch" + joined({secondsSinceEpoch}));
}

std::string RecordingService::getDate() {
  keep("getDate");
  return "07.03.24";
}

std::string RecordingService::getDateShort() {
  keep("getDateShort");
  return "07.03.";
}

void RecordingService::getDate(int& day, int& month, int& year) {
  keep("getDate numbers");
  fill(day, month, year, 21);
}

std::string RecordingService::getDate(const std::string& utc) {
  keep("getDate \"" + utc + "\"");
  return "08.04.25";
}

std::string RecordingService::getDateShort(const std::string& utc) {
  keep("getDateShort \"" + utc + "\"");
  return "08.04.";
}

bool RecordingService::getDate(const std::string& utc, int& day, int& month, int& year) {
  keep("getDate numbers \"" + utc + "\"");
  return fill(day, month, year, 31);
}

bool RecordingService::setDate(int day, int month, int year) {
  keep("setDate" + joined({day, month, year}));
  return m_accepts;
}

std::string RecordingService::getUTCTime(int secondsSinceEpoch) {
  keep("getUTCTime" + joined({secondsSinceEpoch}));
  return "1970-01-01T00:00:01+00:00";
}

std::string RecordingService::getUTCTime(int hours, int minutes, int seconds, int day, int month,
                                         int year) {
  keep("getUTCTime" + joined({hours, minutes, seconds, day, month, year}));
  return "2024-03-07T04:05:06+00:00";
}

std::string RecordingService::convertUtcStringToLocalString(const std::string& utc) {
  keep("convertUtcStringToLocalString \"" + utc + "\"");
  return "";
}

bool RecordingService::observeTimeEvents(ClockServiceObserverIfc* observer) {
  keepObserver("observeTimeEvents", observer);
  return m_accepts && observer != nullptr;
}

bool RecordingService::unobserveTimeEvents(ClockServiceObserverIfc* observer) {
  keepObserver("unobserveTimeEvents", observer);
  return m_accepts && observer != nullptr;
}

std::string RecordingService::setFallbackTime() {
  keep("setFallbackTime");
  return "2026-11-20T10:11:12+00:00";
}

bool RecordingService::isTimeSourceSntp() {
  keep("isTimeSourceSntp");
  return m_accepts;
}

int RecordingService::setAlarmClock(std::string& alarmTime, ClockServiceObserverIfc* observer) {
  keepObserver("setAlarmClock \"" + alarmTime + "\"", observer);
  return 77;
}

bool RecordingService::cancelAlarmClock(int alarmId) {
  keep("cancelAlarmClock" + joined({alarmId}));
  return m_accepts;
}

}  // namespace unit
