// The reference's clocks and timers, and the events that observers get.

#include <algorithm>

#include "simulation/Reference.h"

namespace simulation {
namespace {

constexpr std::int64_t kHour = 3'600'000;
constexpr std::int64_t kLastWall = 8'000'000'000;  // seconds; the virtual clock's maximum

// Milliseconds from `now` (seconds) to the next multiple of `period` of local time, at the current
// offset from UTC.
std::int64_t toNext(std::int64_t now, std::int64_t period) {
  const std::int64_t local = (now + localAt(now).tm_gmtoff) * 1000;
  return period - ((local % period) + period) % period;
}

}  // namespace

void Reference::applyToTime(const Step& step) {
  const auto& n = step.numbers;
  if (step.act == Act::pass) pass(m_uptime + n[0]);
  if (step.act == Act::next) fire();
  if (step.act == Act::jump) m_wallAtZero = n[0] - m_uptime;
  if (step.act == Act::setTime) answer(setTime(n[0], n[1], n[2]));
  if (step.act == Act::setDate) answer(setDate(n[0], n[1], n[2]));
  if (step.act == Act::setSeconds) setSeconds(n[0]);
  if (step.act == Act::saveTime) m_journal.add("-> " + saveTime());
  if (step.act == Act::report) report(n[0], n[1] == 1);
  if (step.act == Act::observe) observe(step.texts[0], true);
  if (step.act == Act::unobserve) observe(step.texts[0], false);
}

std::int64_t Reference::now() const {
  return m_handOffset ? within32(m_uptime / 1000 + *m_handOffset) : floorSeconds(wallMs());
}

bool Reference::setWall(std::int64_t seconds) {
  if (seconds < 0 || seconds > kLastWall) return false;
  m_wallAtZero = seconds * 1000 - m_uptime;
  return true;
}

void Reference::arm(Moment moment, std::int64_t delay) {
  m_due[moment] = {m_uptime + delay, moment < hour ? moment : hour + ++m_armed};
}

void Reference::armHour() {
  arm(hour, toNext(now(), kHour));
}

void Reference::armMidnight() {
  arm(midnight, toNext(now(), 24 * kHour));
}

void Reference::pass(std::int64_t target) {
  const auto isDue = [&](const auto& entry) { return entry.second.at <= target; };
  while (std::any_of(m_due.begin(), m_due.end(), isDue)) fire();
  m_uptime = target;
}

// Time passes to the next timer, which expires.
void Reference::fire() {
  const auto first = std::min_element(m_due.begin(), m_due.end(), [](const auto& a, const auto& b) {
    return std::pair(a.second.at, a.second.order) < std::pair(b.second.at, b.second.order);
  });
  const Moment moment = first->first;
  m_uptime = first->second.at;
  m_due.erase(first);
  if (moment <= dateSetDue) saveTime();
  if (moment == saveDue) arm(saveDue, 12 * kHour);
  if (moment == zoneDue) installZone();
  if (moment == zoneDue) announceTime();
  if (moment == zoneDue || moment == timeSetDue) announceDate();
  if (moment == zoneDue) armHour();
  if (moment == timeSetDue || moment == hour) hourPassed(moment == hour);
  if (moment == dateSetDue || moment == midnight) dayPassed();
  if (moment == zoneDue) armMidnight();
  if (moment == clientRestart) startClient();
}

// The hour also announces a time set by hand that is not announced yet, and then a date that no
// event has announced.
void Reference::hourPassed(bool isHour) {
  m_due.erase(timeSetDue);
  announceTime();
  if (isHour && m_due.count(dateSetDue) == 0 && today() != m_announcedDate) announceDate();
  armHour();
  armMidnight();
  if (isHour) armClientRestart();
}

void Reference::dayPassed() {
  m_due.erase(dateSetDue);
  armMidnight();
  announceDate();
}

// A setter keeps the former offset from UTC.
void Reference::setByHand(tm reading) {
  const std::int64_t offset = reading.tm_gmtoff;
  const std::int64_t instant = timegm(&reading) - offset;
  setWall(instant);
  m_handOffset = within32(instant - m_uptime / 1000);
}

bool Reference::setDate(std::int64_t day, std::int64_t month, std::int64_t year) {
  const std::int64_t fullYear = year > 99 ? year : year + 2000;
  if (fullYear < 1970 || fullYear > 2037) return false;
  tm reading = localAt(now());
  reading.tm_mday = static_cast<int>(day);
  reading.tm_mon = static_cast<int>(month) - 1;
  reading.tm_year = static_cast<int>(fullYear) - 1900;
  setByHand(reading);
  arm(dateSetDue, 1);
  return true;
}

bool Reference::setTime(std::int64_t hours, std::int64_t minutes, std::int64_t seconds) {
  tm reading = localAt(now());
  reading.tm_hour = static_cast<int>(hours);
  reading.tm_min = static_cast<int>(minutes);
  reading.tm_sec = static_cast<int>(seconds);
  setByHand(reading);
  arm(timeSetDue, 1);
  return true;
}

void Reference::setSeconds(std::int64_t seconds) {
  if (hasServer()) return;
  m_timeReceived = false;
  if (!setWall(seconds)) logError("settimeofday failed");
}

// The system's time. As in every UTC text, second 0 means "now".
std::string Reference::saveTime() {
  const std::int64_t system = floorSeconds(wallMs());
  std::string text = utcText(system == 0 ? now() : within32(system));
  write(kSettings[0], text);
  return text;
}

void Reference::report(std::int64_t seconds, bool setsClock) {
  if (setsClock) setWall(seconds);
  if (seconds == 0) return;
  const bool first = !m_timeReceived && m_physicalKnown;
  m_timeReceived = true;
  if (first) m_journal.add("begin clock change");
  announceTime();
  if (first) m_journal.add("end clock change");
  announceDate();
  arm(saveDue, 12 * kHour);
  saveTime();
}

void Reference::observe(const std::string& name, bool begins) {
  if (isRemote(name)) m_journal.add("proxy ClockServiceObserverIfc at " + name);
  const auto found = std::find(m_observers.begin(), m_observers.end(), name);
  const bool reachable = name != "nobody" && name != "stranger";
  answer(begins ? reachable : found != m_observers.end());
  if (begins && reachable) m_observers.push_back(name);
  if (!begins && found != m_observers.end()) m_observers.erase(found);
}

void Reference::announce(const std::string& local, const std::string& remote) {
  for (const std::string& name : m_observers)
    m_journal.add(name + " " + (isRemote(name) ? remote : local));
}

void Reference::announceTime() {
  const tm r = localAt(now());
  announce(print("time %02d:%02d:%02d", r.tm_hour, r.tm_min, r.tm_sec),
           print("timeChangeEvent/0 timeChangeEventHours/0=%d timeChangeEventMinutes/0=%d "
                 "timeChangeEventSeconds/0=%d",
                 r.tm_hour, r.tm_min, r.tm_sec));
}

void Reference::announceDate() {
  const tm r = localAt(now());
  m_announcedDate = today();
  announce(print("date %02d.%02d.%02d", r.tm_mday, r.tm_mon + 1, r.tm_year + 1900),
           print("dateChangeEvent/0 dateChangeEventDay/0=%d dateChangeEventMonth/0=%d "
                 "dateChangeEventYear/0=%d",
                 r.tm_mday, r.tm_mon + 1, r.tm_year + 1900));
}

}  // namespace simulation
