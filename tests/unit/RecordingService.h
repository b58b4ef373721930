#pragma once

#include <string>
#include <vector>

#include "ClockServiceIfc.h"
#include "support/Part.h"

namespace unit {

// A clock service that keeps what it is asked, each call as a line ("setTime 7 8 9"), and answers
// with values that tell the calls apart. Owner: the test. Thread: the test's.
class RecordingService : public support::Part, public ClockServiceIfc {
 public:
  [[nodiscard]] const std::vector<std::string>& calls() const { return m_calls; }
  // From now on the calls with a yes or no say no, and leave their outputs alone.
  void refuse() { m_accepts = false; }
  // What getTime() answers.
  void setTimeText(const std::string& text) { m_timeText = text; }
  [[nodiscard]] ClockServiceObserverIfc* lastObserver() const { return m_lastObserver; }

  std::string getTime() override;
  void getTime(int& hours, int& minutes, int& seconds) override;
  std::string getTime(const std::string& utc) override;
  bool getTime(const std::string& utc, int& hours, int& minutes, int& seconds) override;
  int getTimeVal() override;
  int getDisplayTimeVal() override;
  bool setTime(int hours, int minutes, int seconds) override;
  void setTime(int secondsSinceEpoch) override;
  std::string getDate() override;
  std::string getDateShort() override;
  void getDate(int& day, int& month, int& year) override;
  std::string getDate(const std::string& utc) override;
  std::string getDateShort(const std::string& utc) override;
  bool getDate(const std::string& utc, int& day, int& month, int& year) override;
  bool setDate(int day, int month, int year) override;
  std::string getUTCTime(int secondsSinceEpoch) override;
  std::string getUTCTime(int hours, int minutes, int seconds, int day, int month,
                         int year) override;
  std::string convertUtcStringToLocalString(const std::string& utc) override;
  bool observeTimeEvents(ClockServiceObserverIfc* observer) override;
  bool unobserveTimeEvents(ClockServiceObserverIfc* observer) override;
  std::string setFallbackTime() override;
  bool isTimeSourceSntp() override;
  int setAlarmClock(std::string& alarmTime, ClockServiceObserverIfc* observer) override;
  bool cancelAlarmClock(int alarmId) override;

 private:
  void keep(const std::string& call) { m_calls.push_back(call); }
  void keepObserver(const std::string& call, ClockServiceObserverIfc* observer);
  bool fill(int& a, int& b, int& c, int first) const;

  std::vector<std::string> m_calls;
  std::string m_timeText = "09:07";
  bool m_accepts = true;
  ClockServiceObserverIfc* m_lastObserver = nullptr;
};

}  // namespace unit
