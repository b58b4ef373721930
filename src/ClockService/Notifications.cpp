#include "BoundaryDelay.h"
#include "ClockService.h"
#include "ClockServiceObserverIfc.h"
#include "Context.h"
#include "Log.h"
#include "SemaphoreGuard.h"

int ClockService::createTimer(unsigned int milliseconds) {
  return m_context != nullptr ? m_context->createTimer(*this, milliseconds) : 0;
}

void ClockService::startTimer(int timerId) {
  if (m_context != nullptr && timerId > 0) m_context->startTimer(timerId);
}

void ClockService::stopTimer(int timerId) {
  if (m_context != nullptr && timerId > 0) m_context->stopTimer(timerId);
}

void ClockService::dropTimer(int timerId) {
  if (m_context == nullptr || timerId <= 0) return;
  m_context->cancelTimer(timerId);
  m_context->deleteTimer(timerId);
}

void ClockService::startNewTimer(std::atomic<int>& timer, unsigned int milliseconds) {
  timer = createTimer(milliseconds);
  startTimer(timer);
}

void ClockService::startTimeZoneRefresh() {
  startTimer(m_timeZoneRefreshTimer);
}

void ClockService::setTimeSyncTimer() {
  CLOCK_LOG(logInformation, "setTimeSyncTimer -> setting timer");
  dropTimer(m_timeSyncTimer);
  startNewTimer(m_timeSyncTimer, BoundaryDelay::toNextHour(getTimeValInternal()));
}

void ClockService::setDateSyncTimer() {
  CLOCK_LOG(logInformation, "setTimeSyncTimer -> setting date timer");  // this name by design
  dropTimer(m_dateSyncTimer);
  startNewTimer(m_dateSyncTimer, BoundaryDelay::toNextMidnight(getTimeValInternal()));
}

// The first match in this order wins.
void ClockService::timerEvent(int timerId) {
  if (timerId == m_fallbackTimeUpdateTimer) return refreshFallbackTime();
  if (timerId == m_timeZoneRefreshTimer) return refreshTimeZone();
  if (timerId == m_timeChangedTimer) return announceSetTime();
  // The full hour also announces a set time that is still pending.
  if (timerId == m_timeSyncTimer) return stepHour(timerId, m_timeChangedTimer);
  if (timerId == m_dateChangedTimer) return announceSetDate();
  if (timerId == m_dateSyncTimer) return stepDay(m_dateChangedTimer);
  if (timerId == m_restartNtpClientTimer) return startNTPClient();
}

void ClockService::refreshFallbackTime() {
  const std::string fallbackTime = setFallbackTime();
  CLOCK_LOG(logInformation, "timerEvent(m_fallbackTimeUpdateTimer): FallbackTime is \"%s\"",
            fallbackTime.c_str());
  stopTimer(m_fallbackTimeUpdateTimer);
  startTimer(m_fallbackTimeUpdateTimer);
}

void ClockService::refreshTimeZone() {
  stopTimer(m_timeZoneRefreshTimer);
  setTZValue();
  notifyTimeChangeEvent();
  notifyDateChangeEvent();
  setTimeSyncTimer();
  setDateSyncTimer();
}

void ClockService::announceSetTime() {
  const std::string fallbackTime = setFallbackTime();
  notifyDateChangeEvent();
  CLOCK_LOG(logInformation, "timerEvent(m_timeChangedTimer): FallbackTime is \"%s\"",
            fallbackTime.c_str());
  stepHour(m_timeChangedTimer, m_timeChangedTimer);
}

void ClockService::announceSetDate() {
  const std::string fallbackTime = setFallbackTime();
  CLOCK_LOG(logInformation, "timerEvent(m_dateChangedTimer) FallbackTime is \"%s\"",
            fallbackTime.c_str());
  stepDay(m_dateChangedTimer);
}

// Every full hour rearms both sync timers, so that they follow within the hour when another program
// changes the clock.
void ClockService::stepHour(int expiredTimer, int stoppedTimer) {
  stopTimer(stoppedTimer);
  stopTimer(m_timeSyncTimer);
  startTimer(m_timeSyncTimer);
  notifyTimeChangeEvent();
  const int hourlyTimer = m_timeSyncTimer;
  if (expiredTimer == hourlyTimer) announceMissedDate();
  setTimeSyncTimer();
  setDateSyncTimer();
  if (expiredTimer == hourlyTimer) setRestartNTPClientTimer();
}

// The date may have changed without an event: at midnight the hour's timer replaces the midnight
// timer before that expires, and another program may have set the clock. A date set by hand has a
// timer of its own.
void ClockService::announceMissedDate() {
  if (!m_setDatePending.exchange(false)) announceDate(Announce::whenNew);
}

void ClockService::stepDay(int stoppedTimer) {
  stopTimer(stoppedTimer);
  m_setDatePending = false;
  setDateSyncTimer();
  notifyDateChangeEvent();
}

void ClockService::notifyTimeChangeEvent() {
  int hours = 0, minutes = 0, seconds = 0;
  getTime(hours, minutes, seconds);
  const SemaphoreGuard guard(m_observerLock);
  for (ClockServiceObserverIfc* const observer : *m_observers)
    if (observer != nullptr) observer->timeChangeEvent(hours, minutes, seconds);
}

void ClockService::notifyDateChangeEvent() {
  announceDate(Announce::always);
}

// Reads, compares, records and announces the date under one lock, so that the recorded date is
// always the one last announced by any thread.
void ClockService::announceDate(Announce when) {
  const SemaphoreGuard guard(m_observerLock);
  int day = 0, month = 0, year = 0;
  getDate(day, month, year);
  const int date = BoundaryDelay::dateNumber(day, month, year);
  if (m_announcedDate.exchange(date) == date && when == Announce::whenNew) return;
  for (ClockServiceObserverIfc* const observer : *m_observers)
    if (observer != nullptr) observer->dateChangeEvent(day, month, year);
}

void ClockService::notifyTimezoneChangeEvent(const std::string& tz) {
  const SemaphoreGuard guard(m_observerLock);
  for (ClockServiceObserverIfc* const observer : *m_observers)
    if (observer != nullptr) observer->timezoneChangeEvent(tz);
}
