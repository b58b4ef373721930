#pragma once

#include <string>

class ClockServiceObserverIfc;

// The telephone's wall clock, as the other services see it.
// Owner: the framework; never deleted through this interface. Thread: any. The slot order is part
// of the contract: peers are built against it.
//
// A UTC string is the 25-character form "2016-06-16T00:00:00+00:00" (ISO 8601, RFC 3339).
// Display text follows the settings: dates "07.03.24", "24-03-07" or "03/07/24", times "23:59" or
// "11:59pm"; midnight is "00:00am" by design.
class ClockServiceIfc {
 public:
  // Local time of day now: as display text, and as hours 0-23, minutes 0-59, seconds 0-60.
  virtual std::string getTime() = 0;
  virtual void getTime(int& hours, int& minutes, int& seconds) = 0;

  // Local time of day of a UTC string. The text form cannot report a string that does not parse;
  // the number form returns false and leaves the outputs as they were.
  virtual std::string getTime(const std::string& utc) = 0;
  virtual bool getTime(const std::string& utc, int& hours, int& minutes, int& seconds) = 0;

  // Now in seconds since 1970-01-01 UTC; and the local wall-clock reading counted the same way.
  virtual int getTimeVal() = 0;
  virtual int getDisplayTimeVal() = 0;

  // Sets the local time of day by hand, today. Values are normalised, not checked. Always true. A
  // time on the other side of a daylight-saving change of today moves by an hour.
  virtual bool setTime(int hours, int minutes, int seconds) = 0;

  // Sets the system clock to seconds since 1970-01-01 UTC. Ignored while an NTP server is
  // configured.
  virtual void setTime(int secondsSinceEpoch) = 0;

  // Local date today: long and short display text, and day 1-31, month 1-12, four-digit year.
  virtual std::string getDate() = 0;
  virtual std::string getDateShort() = 0;
  virtual void getDate(int& day, int& month, int& year) = 0;

  // Local date of a UTC string, failing as getTime does.
  virtual std::string getDate(const std::string& utc) = 0;
  virtual std::string getDateShort(const std::string& utc) = 0;
  virtual bool getDate(const std::string& utc, int& day, int& month, int& year) = 0;

  // Sets the local date by hand and keeps the time of day; across a daylight-saving change the time
  // moves by an hour. year: four digits, or up to 99 meaning 2000 more. False, and nothing changed,
  // outside 1970-2037. Day and month are normalised.
  virtual bool setDate(int day, int month, int year) = 0;

  // The UTC string of seconds since 1970-01-01 UTC; 0 means now.
  virtual std::string getUTCTime(int secondsSinceEpoch) = 0;

  // The UTC string of these fields. month: 1-12; year: counted from 1900, unlike everywhere else.
  virtual std::string getUTCTime(int hours, int minutes, int seconds, int day, int month,
                                 int year) = 0;

  // Not implemented: throws std::logic_error on every call.
  virtual std::string convertUtcStringToLocalString(const std::string& utc) = 0;

  // Registers an observer, which is not owned. False for null. Registering twice notifies twice.
  virtual bool observeTimeEvents(ClockServiceObserverIfc* observer) = 0;

  // Removes the first registration of the observer. False when there is none. After the return,
  // that registration delivers no more events.
  virtual bool unobserveTimeEvents(ClockServiceObserverIfc* observer) = 0;

  // Saves the system's time as the one to start from after a restart. Returns it as a UTC string,
  // empty when the time cannot be read.
  virtual std::string setFallbackTime() = 0;

  // True when the NTP client has reported a time since the start or the last setTime(seconds).
  virtual bool isTimeSourceSntp() = 0;

  // Alarms are not implemented: always 0, always false. Peers may be built against them.
  virtual int setAlarmClock(std::string& alarmTime, ClockServiceObserverIfc* observer) = 0;
  virtual bool cancelAlarmClock(int alarmId) = 0;

 protected:
  ~ClockServiceIfc() = default;
};
