#include <sys/stat.h>
#include <sys/time.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>

#include "ClockService.h"
#include "ClockServiceDataHandler.h"
#include "DevicePaths.h"
#include "LocalMgmtIfc.h"
#include "LocalTime.h"
#include "Log.h"
#include "ManageableData.h"
#include "ManagementKeyNames.h"
#include "Saturate.h"
#include "SntpServer.h"
#include "Storage.h"
#include "SystemClock.h"

namespace {

// Years that 32-bit seconds since 1970 can hold, and how two digits are meant.
constexpr int firstYear = 1970;
constexpr unsigned int yearsAfterFirst = 67;
constexpr int lastShortYear = 99;
constexpr int centuryOfShortYears = 2000;

constexpr std::size_t utcStringLength = 25;

struct CloseFile {
  void operator()(FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<FILE, CloseFile>;

// Only a regular file is opened: opening a pipe in its place would hold up the start until somebody
// writes to it, and a folder has no token to read. Neither is touched.
File openFallbackFile() {
  struct stat properties {};
  if (stat(DevicePaths::fallbackTimeFile, &properties) != 0) return nullptr;
  if (!S_ISREG(properties.st_mode)) return nullptr;
  return File(std::fopen(DevicePaths::fallbackTimeFile, "r"));
}

}  // namespace

time_t ClockService::setDateInternal(int day, int month, int year) const {
  tm local = localTime(getTimeValInternal());
  local.tm_mday = day;
  local.tm_mon = saturatedSum(month, -1);
  local.tm_year = saturatedSum(year, -epochYearOfTm);
  return mktime(&local);
}

time_t ClockService::setTimeInternal(int hours, int minutes, int seconds) const {
  tm local = localTime(getTimeValInternal());
  local.tm_hour = hours;
  local.tm_min = minutes;
  local.tm_sec = seconds;
  return mktime(&local);
}

// From here on the clock follows the uptime, whatever becomes of the system's time.
void ClockService::setByHand(time_t secondsSinceEpoch) {
  votk_set_time_seconds_since_epoch(static_cast<unsigned long>(secondsSinceEpoch));
  m_userTimeOffset = saturate<std::int32_t>(static_cast<std::int64_t>(secondsSinceEpoch) -
                                            static_cast<std::int64_t>(getUptime()));
  m_userTimeSet = true;
}

bool ClockService::setDate(int day, int month, int year) {
  CLOCK_LOG(logInformation, "setDate: \"%d\", \"%d\", \"%d\"", day, month, year);
  if (year <= lastShortYear) year += centuryOfShortYears;
  if (static_cast<unsigned int>(year) - static_cast<unsigned int>(firstYear) > yearsAfterFirst) {
    CLOCK_LOG(logInformation, "Year falls outside UNIX/POSIX restriction: %d", year);
    return false;
  }
  m_setDatePending = m_dateChangedTimer > 0;  // first: a full hour that sees the new date sees this
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
  const std::lock_guard<std::mutex> guard(m_settingTexts);
  return m_dataHandler->getSntpAddr();
}

// Reads the system's clock on purpose, not the one set by hand. Read and stored in one step, so
// that no thread's time is stored over a later one.
std::string ClockService::setFallbackTime() {
  const std::lock_guard<std::mutex> guard(m_settingTexts);
  const time_t now = time(nullptr);
  if (now == static_cast<time_t>(-1)) return {};
  std::string fallbackTime = getUTCTime(saturate<int>(now));
  if (m_dataHandler != nullptr) m_dataHandler->setFallbackTime(fallbackTime);
  CLOCK_LOG(logTrace, "setFallbackTime: \"%s\"", fallbackTime.c_str());
  return fallbackTime;
}

// The file is consumed once, whatever it holds; from then on the settings are the only home of the
// fallback time.
void ClockService::restoreFallbackTime() {
  File file = openFallbackFile();
  if (file == nullptr) return;
  std::array<char, 128> token{};
  const int items = std::fscanf(file.get(), "%127s", token.data());
  file.reset();
  if (items == 1 && std::strlen(token.data()) == utcStringLength) {
    m_dataHandler->setFallbackTime(token.data());
    CLOCK_LOG(logInformation, "restoreFallbackTime: time \"%s\" from file \"%s\"", token.data(),
              DevicePaths::fallbackTimeFile);
  }
  Storage::deleteFile_noEx(DevicePaths::fallbackTimeFile);
}

void ClockService::logStartUpUtc() {
  ManageableData record;
  record.populate(ManagementKeyNames::lastRestartDate, ManagementKeyNames::lastRestartDate,
                  getUTCTime(0));
  if (!m_localMgmt->setData(record))
    CLOCK_LOG(logError, "logStartUpUtc method failed to write last-restart-date");
}
