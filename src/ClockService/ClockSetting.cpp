#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <ctime>
#include <string>

#include "ClockService.h"
#include "ClockServiceDataHandler.h"
#include "DevicePaths.h"
#include "LocalMgmtIfc.h"
#include "LocalTime.h"
#include "Log.h"
#include "ManageableData.h"
#include "ManagementKeyNames.h"
#include "OpenFile.h"
#include "Saturate.h"
#include "SemaphoreGuard.h"
#include "SntpServer.h"
#include "Storage.h"
#include "SystemClock.h"

namespace {

// The years that 32-bit seconds since 1970 can hold, and the century of two-digit years.
constexpr int kFirstYear = 1970;
constexpr unsigned int kYearsAfterFirst = 67;
constexpr int kLastShortYear = 99;
constexpr int kCenturyOfShortYears = 2000;

constexpr std::size_t kUtcStringLength = 25;

// The search for the token of the fallback file ends after this many bytes, so that an endless
// device or pipe in its place does not block the start.
constexpr ssize_t kMostBytesOfFallbackFile = 16 << 20;

// The first token, as scanf's "%s" would read it, but at most up to a zero byte. May be empty.
std::string firstToken(int file) {
  constexpr const char* kBlanks = " \t\n\v\f\r";
  std::array<char, PIPE_BUF> chunk;
  std::string token;
  for (ssize_t left = kMostBytesOfFallbackFile; left > 0;) {
    const ssize_t count = read(file, chunk.data(), chunk.size());
    if (count <= 0) break;
    left -= count;
    token.append(chunk.data(), static_cast<std::size_t>(count));
    token.erase(0, token.find_first_not_of(kBlanks));
    if (token.size() > kUtcStringLength || token.find_first_of(kBlanks) != std::string::npos) break;
  }
  token.resize(std::min({token.size(), token.find_first_of(kBlanks), token.find('\0')}));
  return token;
}

}  // namespace

time_t ClockService::setDateInternal(int day, int month, int year) const {
  tm local = localTime(getTimeValInternal());
  local.tm_mday = day;
  local.tm_mon = saturatedSum(month, -1);
  local.tm_year = saturatedSum(year, -kEpochYearOfTm);
  return mktime(&local);
}

time_t ClockService::setTimeInternal(int hours, int minutes, int seconds) const {
  tm local = localTime(getTimeValInternal());
  local.tm_hour = hours;
  local.tm_min = minutes;
  local.tm_sec = seconds;
  return mktime(&local);
}

// Afterwards the service's time follows the uptime and ignores the system clock.
void ClockService::setByHand(time_t secondsSinceEpoch) {
  votk_set_time_seconds_since_epoch(static_cast<unsigned long>(secondsSinceEpoch));
  m_userTimeOffset = saturate<std::int32_t>(static_cast<std::int64_t>(secondsSinceEpoch) -
                                            static_cast<std::int64_t>(getUptime()));
  m_userTimeSet = true;
}

bool ClockService::setDate(int day, int month, int year) {
  CLOCK_LOG(logInformation, "setDate: \"%d\", \"%d\", \"%d\"", day, month, year);
  if (year <= kLastShortYear) year += kCenturyOfShortYears;
  if (static_cast<unsigned int>(year) - static_cast<unsigned int>(kFirstYear) > kYearsAfterFirst) {
    CLOCK_LOG(logInformation, "Year falls outside UNIX/POSIX restriction: %d", year);
    return false;
  }
  // Before the date changes: a full hour that sees the new date must see the flag, too.
  m_setDatePending = m_dateChangedTimer > 0;
  setByHand(setDateInternal(day, month, year));
  startTimer(m_dateChangedTimer);
  return true;
}

bool ClockService::setTime(int hours, int minutes, int seconds) {
  setByHand(setTimeInternal(hours, minutes, seconds));
  startTimer(m_timeChangedTimer);
  return true;
}

void ClockService::setTime(int secondsSinceEpoch) {
  const std::string server = sntpAddress();
  if (isConfiguredServer(server)) {
    CLOCK_LOG(logInformation, "SNTP configured (%s) so time not updated", server.c_str());
    return;
  }
  m_sntpTimeReceived = false;
  timeval now{};
  now.tv_sec = secondsSinceEpoch;
  if (settimeofday(&now, nullptr) < 0) {
    CLOCK_LOG(logError, "settimeofday failed");
    return;
  }
  CLOCK_LOG(logInformation, "UTC set to %s", getUTCTime(saturate<int>(time(nullptr))).c_str());
}

std::string ClockService::sntpAddress() const {
  if (m_dataHandler == nullptr) return {};
  const SemaphoreGuard guard(m_dataHandler->textLock);
  return m_dataHandler->getSntpAddr();
}

// Deliberately the system's clock, not the one set by hand.
std::string ClockService::systemTime() {
  const time_t now = time(nullptr);
  return now != static_cast<time_t>(-1) ? getUTCTime(saturate<int>(now)) : std::string();
}

// Reads and stores under one lock, so that no thread overwrites a later time with an earlier one.
std::string ClockService::storeSystemTime() {
  const SemaphoreGuard texts(m_dataHandler->textLock);
  std::string now = systemTime();
  if (!now.empty()) m_dataHandler->setFallbackTime(now);
  return now;
}

std::string ClockService::setFallbackTime() {
  std::string fallbackTime = m_dataHandler != nullptr ? storeSystemTime() : systemTime();
  if (!fallbackTime.empty()) CLOCK_LOG(logTrace, "setFallbackTime: \"%s\"", fallbackTime.c_str());
  return fallbackTime;
}

// The file is read once and deleted; from then on only the settings hold the fallback time. It is
// opened without blocking: a pipe in its place must not block the start.
void ClockService::restoreFallbackTime() {
  OpenFile file;
  if (!file.open(DevicePaths::kFallbackTimeFile, O_RDONLY | O_NONBLOCK)) return;
  const std::string token = firstToken(file.number());
  if (token.size() == kUtcStringLength) {
    const SemaphoreGuard texts(m_dataHandler->textLock);
    m_dataHandler->setFallbackTime(token);
    CLOCK_LOG(logInformation, "restoreFallbackTime: time \"%s\" from file \"%s\"", token.c_str(),
              DevicePaths::kFallbackTimeFile);
  }
  Storage::deleteFile_noEx(DevicePaths::kFallbackTimeFile);
}

void ClockService::logStartUpUtc() {
  ManageableData record;
  record.populate(ManagementKeyNames::kLastRestartDate, ManagementKeyNames::kLastRestartDate,
                  getUTCTime(0));
  if (!m_localMgmt->setData(record))
    CLOCK_LOG(logError, "logStartUpUtc method failed to write last-restart-date");
}
