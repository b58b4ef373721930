// The model's clocks and timers.

#include <algorithm>

#include "simulation/model/ClockModel.h"
#include "simulation/model/Texts.h"

namespace simulation {
namespace {

constexpr std::int64_t kSecond = 1000;
constexpr std::int64_t kLastWall = 8'000'000'000;  // what the platform's clock takes

}  // namespace

std::int64_t ClockModel::now() const {
  if (m_handOffset) return within32(m_uptime / kSecond + *m_handOffset);
  return floorOf(wallMs(), kSecond);
}

bool ClockModel::setWall(std::int64_t seconds) {
  if (seconds < 0 || seconds > kLastWall) return false;
  m_wallAtZero = seconds * kSecond - m_uptime;
  return true;
}

void ClockModel::create(Purpose purpose, std::int64_t period) {
  m_timers[purpose] = Timer{++m_lastTimer, period, std::nullopt};
}

void ClockModel::start(Purpose purpose) {
  m_timers[purpose].due = m_uptime + m_timers[purpose].period;
}

void ClockModel::replace(Purpose purpose, std::int64_t period) {
  create(purpose, period);
  start(purpose);
}

std::optional<ClockModel::Purpose> ClockModel::earliest() const {
  std::optional<Purpose> best;
  for (std::size_t i = 0; i < purposes; ++i) {
    const Timer& timer = m_timers[i];
    if (!timer.due) continue;
    if (!best ||
        std::pair(*timer.due, timer.id) < std::pair(*m_timers[*best].due, m_timers[*best].id))
      best = static_cast<Purpose>(i);
  }
  return best;
}

void ClockModel::pass(std::int64_t ms) {
  const std::int64_t target = m_uptime + ms;
  for (auto timer = earliest(); timer && *m_timers[*timer].due <= target; timer = earliest()) {
    fire(*timer);
  }
  m_uptime = target;
}

void ClockModel::fire(Purpose purpose) {
  m_uptime = *m_timers[purpose].due;
  stop(purpose);
  expired(purpose);
}

void ClockModel::expired(Purpose purpose) {
  switch (purpose) {
    case fallbackTimer:
      saveFallback();
      return start(fallbackTimer);
    case zoneRefresh:
      installZone();
      tellTime();
      tellDate();
      armHour();
      return armMidnight();
    case timeChanged:
      saveFallback();
      tellDate();
      return stepHour(purpose);
    case timeSync:
      return stepHour(purpose);
    case dateChanged:
      saveFallback();
      return stepDay();
    case dateSync:
      return stepDay();
    case restartClient:
      return startClient();
    case purposes:
      return;
  }
}

void ClockModel::stepHour(Purpose expiredOne) {
  stop(timeChanged);
  tellTime();
  const bool hourly = expiredOne == timeSync;
  if (hourly && today() != m_toldDay && !m_timers[dateChanged].due) tellDate();
  armHour();
  armMidnight();
  if (hourly) armRestart();
}

void ClockModel::stepDay() {
  stop(dateChanged);
  armMidnight();
  tellDate();
}

std::int64_t ClockModel::today() const {
  const Civil local = localNow();
  return daysTo(local.year, local.month, local.day);
}

// The next boundary of the local reading, taken under the offset that holds now.
void ClockModel::armHour() {
  const Civil local = localNow();
  replace(timeSync, (3600 - local.minute * 60 - local.second) * kSecond);
}

void ClockModel::armMidnight() {
  const Civil local = localNow();
  replace(dateSync, (86400 - local.hour * 3600 - local.minute * 60 - local.second) * kSecond);
}

}  // namespace simulation
