#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "ClockServiceIfc.h"
#include "support/Part.h"

namespace unit {

// A clock service that records each call as a line ("setTime 7 8 9") and answers with values that
// distinguish the calls. Owner: the test. Thread: the test's.
class RecordingService : public support::Part, public ClockServiceIfc {
 public:
  std::vector<std::string> calls;
  bool accepts = true;  // false: calls that return a flag return false and leave their outputs
  std::string timeText = "09:07";  // what getTime() returns
  ClockServiceObserverIfc* lastObserver = nullptr;

  std::string getTime() override { return record("getTime", timeText); }
  void getTime(int& hours, int& minutes, int& seconds) override {
    record("getTime numbers", fill(hours, minutes, seconds, 1));
  }
  std::string getTime(const std::string& utc) override {
    return record("getTime" + quoted(utc), "10:08");
  }
  bool getTime(const std::string& utc, int& hours, int& minutes, int& seconds) override {
    return record("getTime numbers" + quoted(utc), fill(hours, minutes, seconds, 11));
  }
  int getTimeVal() override { return record("getTimeVal", 1800000001); }
  int getDisplayTimeVal() override { return record("getDisplayTimeVal", 1800003602); }
  bool setTime(int hours, int minutes, int seconds) override {
    return record("setTime" + joined({hours, minutes, seconds}), accepts);
  }
  void setTime(int secondsSinceEpoch) override {
    record("setTime epoch" + joined({secondsSinceEpoch}), accepts);
  }
  std::string getDate() override { return record("getDate", "07.03.24"); }
  std::string getDateShort() override { return record("getDateShort", "07.03."); }
  void getDate(int& day, int& month, int& year) override {
    record("getDate numbers", fill(day, month, year, 21));
  }
  std::string getDate(const std::string& utc) override {
    return record("getDate" + quoted(utc), "08.04.25");
  }
  std::string getDateShort(const std::string& utc) override {
    return record("getDateShort" + quoted(utc), "08.04.");
  }
  bool getDate(const std::string& utc, int& day, int& month, int& year) override {
    return record("getDate numbers" + quoted(utc), fill(day, month, year, 31));
  }
  bool setDate(int day, int month, int year) override {
    return record("setDate" + joined({day, month, year}), accepts);
  }
  std::string getUTCTime(int secondsSinceEpoch) override {
    return record("getUTCTime" + joined({secondsSinceEpoch}), "1970-01-01T00:00:01+00:00");
  }
  std::string getUTCTime(int hours, int minutes, int seconds, int day, int month,
                         int year) override {
    return record("getUTCTime" + joined({hours, minutes, seconds, day, month, year}),
                  "2024-03-07T04:05:06+00:00");
  }
  std::string convertUtcStringToLocalString(const std::string& utc) override {
    return record("convertUtcStringToLocalString" + quoted(utc), "");
  }
  bool observeTimeEvents(ClockServiceObserverIfc* observer) override {
    return record("observeTimeEvents" + kindOf(observer), accepts && observer != nullptr);
  }
  bool unobserveTimeEvents(ClockServiceObserverIfc* observer) override {
    return record("unobserveTimeEvents" + kindOf(observer), accepts && observer != nullptr);
  }
  std::string setFallbackTime() override {
    return record("setFallbackTime", "2026-11-20T10:11:12+00:00");
  }
  bool isTimeSourceSntp() override { return record("isTimeSourceSntp", accepts); }
  int setAlarmClock(std::string& alarmTime, ClockServiceObserverIfc* observer) override {
    return record("setAlarmClock" + quoted(alarmTime) + kindOf(observer), 77);
  }
  bool cancelAlarmClock(int alarmId) override {
    return record("cancelAlarmClock" + joined({alarmId}), accepts);
  }

 private:
  template <class Value>
  Value record(const std::string& call, Value result) {
    calls.push_back(call);
    return result;
  }
  [[nodiscard]] bool fill(int& a, int& b, int& c, int first) const {
    if (accepts) a = first, b = first + 1, c = first + 2;
    return accepts;
  }
  std::string kindOf(ClockServiceObserverIfc* observer) {
    lastObserver = observer;
    return observer != nullptr ? " observer" : " null";
  }
  static std::string quoted(const std::string& text) { return " \"" + text + "\""; }
  static std::string joined(std::initializer_list<int> numbers) {
    std::string text;
    for (const int number : numbers) text += " " + std::to_string(number);
    return text;
  }
};

}  // namespace unit
