// Whom the model tells what.

#include <algorithm>

#include "simulation/model/ClockModel.h"
#include "simulation/model/Texts.h"

namespace simulation {

bool ClockModel::observe(const std::string& name) {
  if (name == "nobody") return false;
  m_observers.push_back(name);
  return true;
}

bool ClockModel::unobserve(const std::string& name) {
  const auto found = std::find(m_observers.begin(), m_observers.end(), name);
  if (found == m_observers.end()) return false;
  m_observers.erase(found);
  return true;
}

void ClockModel::tell(const std::string& local, const std::string& remote) {
  for (const std::string& name : m_observers) {
    m_journal.add(name + (isPeer(name) ? " gets 0 " + remote : " hears " + local));
  }
}

void ClockModel::tellTime() {
  if (m_observers.empty()) return;
  const Civil local = localNow();
  const int h = static_cast<int>(local.hour);
  const int m = static_cast<int>(local.minute);
  const int s = static_cast<int>(local.second);
  tell(print("time %d:%d:%d", h, m, s),
       print("timeChangeEvent timeChangeEventHours/0=%d timeChangeEventMinutes/0=%d "
             "timeChangeEventSeconds/0=%d",
             h, m, s));
}

void ClockModel::tellDate() {
  m_toldDay = today();  // also when there is nobody to hear it
  if (m_observers.empty()) return;
  const Civil local = localNow();
  const int d = static_cast<int>(local.day);
  const int m = static_cast<int>(local.month);
  const int y = static_cast<int>(local.year);
  tell(print("date %d.%d.%d", d, m, y),
       print("dateChangeEvent dateChangeEventDay/0=%d dateChangeEventMonth/0=%d "
             "dateChangeEventYear/0=%d",
             d, m, y));
}

void ClockModel::tellZone() {
  tell("zone " + m_tz, "timezoneChangeEvent timezoneChangeEventTimezone/0=\"" + m_tz + "\"");
}

}  // namespace simulation
