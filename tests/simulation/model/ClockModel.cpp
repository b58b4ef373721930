#include <algorithm>

#include "simulation/model/ClockModel.h"

#include "simulation/ManagementKeys.h"
#include "simulation/model/Texts.h"
#include "simulation/model/ZoneTable.h"

namespace simulation {
namespace {

std::string number(const char* label, std::int64_t value) {
  return std::string(label) + std::to_string(value);
}

}  // namespace

ClockModel::ClockModel() : m_settings(nullptr, m_journal) {}

void ClockModel::apply(const Step& step) {
  if (applyToTime(step) || applyToManagement(step) || applyToPeers(step)) return;
  applyToDevice(step);
}

bool ClockModel::applyToTime(const Step& step) {
  const auto& n = step.numbers;
  switch (step.act) {
    case Act::pass:
      return pass(n[0]), true;
    case Act::next:
      return fire(*earliest()), true;
    case Act::jump:
      return m_wallAtZero = n[0] - m_uptime, true;
    case Act::setTime:
      return answered(setTime(n[0], n[1], n[2])), true;
    case Act::setSeconds:
      return setSeconds(n[0]), true;
    case Act::setDate:
      return answered(setDate(n[0], n[1], n[2])), true;
    case Act::saveFallback:
      return m_journal.add("-> " + saveFallback()), true;
    case Act::report:
      return reported(n[0], n[1] == 1), true;
    default:
      return false;
  }
}

bool ClockModel::applyToManagement(const Step& step) {
  switch (step.act) {
    case Act::set:
      return answered(setValue(step.texts[0], step.texts[1])), true;
    case Act::get:
      return asked(step.texts[0]), true;
    case Act::reset:
      return answered(resetUser()), true;
    case Act::deviceValue:
      return deviceChanged(step.texts[0], step.texts[1]), true;
    case Act::mayReset:
      return m_mayReset[step.texts[0]] = step.numbers[0] == 1, true;
    default:
      return false;
  }
}

bool ClockModel::applyToPeers(const Step& step) {
  switch (step.act) {
    case Act::call:
      return called(step), true;
    case Act::garbage:
      return m_journal.add("log 2 ClockServiceInvoker: Failed to decode msg"), true;
    case Act::callNobody:
      return m_journal.add(
                 "log 2 ClockServiceInvoker: Could not cast executable to ClockServiceIfc"),
             true;
    case Act::observe:
      return answered(observe(step.texts[0])), true;
    case Act::unobserve:
      return answered(unobserve(step.texts[0])), true;
    case Act::convert:
      return m_journal.add("-> a logic error"), true;
    default:
      return false;
  }
}

void ClockModel::applyToDevice(const Step& step) {
  const bool on = !step.numbers.empty() && step.numbers[0] == 1;
  if (step.act == Act::outsideStore) m_store.items[step.texts[0]] = step.texts[1];
  if (step.act == Act::storeRefuses) m_store.refuses = on;
  if (step.act == Act::storeSilent) m_store.silent = on;
  if (step.act == Act::launchFails) m_launchFails = on;
  if (step.act == Act::lookupsFail) m_lookupsFail = on;
  if (step.act == Act::logLevel) m_logLevel = static_cast<int>(step.numbers[0]);
  if (step.act == Act::fallbackFile) m_fallbackFile = step.texts[0];
  if (step.act == Act::service && on) m_services.insert(step.texts[0]);
  if (step.act == Act::service && !on) m_services.erase(step.texts[0]);
  if (step.act == Act::restart) restart(step);
  const bool link = step.act == Act::jack && step.numbers[0] == 5 && step.numbers[1] == 1;
  if (link && m_physicalSubscribed) startClient();
}

Lines ClockModel::snapshot() const {
  const Civil local = localNow();
  const SettingsModel& s = m_settings;
  Lines lines{"time " + timeText(local.hour, local.minute, s.timeFormat),
              "date " + dateText(local, s.dateFormat),
              "short date " + shortDateText(local, s.dateFormat),
              number("hours ", local.hour),
              number("minutes ", local.minute),
              number("seconds ", local.second),
              number("day ", local.day),
              number("month ", local.month),
              number("year ", local.year),
              number("seconds since 1970 ", within32(now())),
              number("local seconds ", within32(secondsTo(local))),
              "UTC " + utcText(now()),
              m_timeReceived ? "from NTP yes" : "from NTP no",
              number("wall ", wallMs()),
              "TZ " + m_tz,
              "script " + m_script};
  for (const char* const key : kManagementKeys)
    lines.push_back(std::string(key) + " " + *value(key));
  return lines;
}

}  // namespace simulation
