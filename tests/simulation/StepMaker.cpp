#include "simulation/StepMaker.h"

#include <algorithm>

#include "simulation/model/ClockModel.h"
#include "simulation/model/Texts.h"

namespace simulation {
namespace {

constexpr std::int64_t kSecond = 1000;
constexpr std::int64_t kMinute = 60 * kSecond;
constexpr std::int64_t kHour = 60 * kMinute;
constexpr std::int64_t kDay = 24 * kHour;

Step numbers(Act act, std::vector<std::int64_t> values) {
  return {act, std::move(values), {}, {}};
}

Step texts(Act act, std::vector<std::string> values) {
  return {act, {}, std::move(values), {}};
}

}  // namespace

const StepMaker::Weighted StepMaker::kMakers[] = {
    {220, &StepMaker::pass},          {90, &StepMaker::nextTimer},    {60, &StepMaker::jump},
    {240, &StepMaker::set},           {10, &StepMaker::get},          {15, &StepMaker::reset},
    {80, &StepMaker::deviceValue},    {10, &StepMaker::outsideStore}, {100, &StepMaker::call},
    {25, &StepMaker::remoteObserver}, {10, &StepMaker::badCall},      {35, &StepMaker::observer},
    {50, &StepMaker::report},         {15, &StepMaker::jack},         {40, &StepMaker::setByHand},
    {15, &StepMaker::setSeconds},     {30, &StepMaker::trouble},      {10, &StepMaker::service},
    {8, &StepMaker::fallbackFile},    {12, &StepMaker::oddity},       {15, &StepMaker::restart}};

Step StepMaker::next(const ClockModel& model) {
  std::int64_t all = 0;
  for (const Weighted& entry : kMakers) all += entry.weight;
  std::int64_t drawn = m_chance.between(1, all);
  for (const Weighted& entry : kMakers) {
    drawn -= entry.weight;
    if (drawn <= 0) return (this->*entry.make)(model);
  }
  return pass(model);
}

Step StepMaker::pass(const ClockModel&) {
  if (m_chance.oneIn(5)) return numbers(Act::pass, {m_chance.between(1, 2)});
  if (m_chance.oneIn(4)) return numbers(Act::pass, {m_chance.between(1, 5 * kSecond)});
  if (m_chance.oneIn(4)) return numbers(Act::pass, {m_chance.between(1, 120) * kSecond});
  if (m_chance.oneIn(250)) return numbers(Act::pass, {m_chance.between(1, 3 * 7 * kDay)});
  if (m_chance.oneIn(40)) return numbers(Act::pass, {m_chance.between(1, 4 * kDay)});
  if (m_chance.oneIn(3)) return numbers(Act::pass, {m_chance.between(1, 12 * kHour)});
  return numbers(Act::pass, {m_chance.between(1, 90 * kMinute)});
}

Step StepMaker::nextTimer(const ClockModel&) {
  return Step{Act::next, {}, {}, {}};
}

// A moment shortly before something happens: midnight, a change of the offset, the end of a year, a
// leap day, a full hour.
std::int64_t StepMaker::momentMs(const ClockModel& model) {
  const std::int64_t base = anySecond();
  const Zone& zone = model.zone();
  const Civil local = zone.localAt(base);
  const bool daylight = zone.isDaylight(base);
  switch (m_chance.between(0, 5)) {
    case 0:
      return zone.instantOf({local.year, local.month, local.day + 1}, daylight) * kSecond;
    case 1:
    case 2:
      return zone.changeAfter(base) * kSecond;
    case 3:
      return zone.instantOf({local.year, 12, 32}, daylight) * kSecond;
    case 4:
      return zone.instantOf({local.year / 4 * 4, 2, m_chance.between(29, 30)}, daylight) * kSecond;
    default:
      return zone.instantOf({local.year, local.month, local.day, local.hour + 1}, daylight) *
             kSecond;
  }
}

std::int64_t StepMaker::aroundMs(const ClockModel& model) {
  std::int64_t ms = momentMs(model);
  ms -= m_chance.oneIn(3) ? m_chance.between(-2, 2) * kSecond : m_chance.between(1, 2 * kHour);
  if (m_chance.oneIn(3)) ms -= m_chance.between(0, 999);
  return std::clamp<std::int64_t>(ms, kDay, 2147500000LL * kSecond);
}

Step StepMaker::jump(const ClockModel& model) {
  if (!m_chance.oneIn(4)) return numbers(Act::jump, {aroundMs(model)});
  const std::int64_t from =
      std::clamp<std::int64_t>(model.wallMs(), 2 * kDay, 2147500000LL * kSecond);
  return numbers(Act::jump, {from + m_chance.between(-kDay, kDay / 2)});
}

Step StepMaker::setByHand(const ClockModel& model) {
  if (m_chance.oneIn(2)) {
    if (m_chance.oneIn(4))
      return numbers(Act::setTime, {m_chance.between(-100, 200), m_chance.between(-99, 99),
                                    m_chance.between(-99, 99)});
    if (m_chance.oneIn(2))
      return numbers(Act::setTime, {m_chance.between(0, 23), 59, m_chance.between(50, 60)});
    return numbers(Act::setTime,
                   {m_chance.between(0, 23), m_chance.between(0, 59), m_chance.between(0, 59)});
  }
  if (m_chance.oneIn(4))
    return numbers(Act::setDate, {m_chance.between(-400, 400), m_chance.between(-20, 40),
                                  m_chance.between(-10, 30)});
  if (m_chance.oneIn(5))
    return numbers(Act::setDate,
                   {m_chance.between(1, 31), m_chance.between(1, 12),
                    m_chance.oneOf(std::vector<int>{1969, 1970, 2037, 2038, 38, 99})});
  const Civil day = model.zone().localAt(aroundMs(model) / kSecond);
  return numbers(Act::setDate, {day.day, day.month, m_chance.oneIn(3) ? day.year % 30 : day.year});
}

Step StepMaker::setSeconds(const ClockModel& model) {
  if (m_chance.oneIn(12)) return numbers(Act::setSeconds, {m_chance.between(-2, 2)});
  return numbers(Act::setSeconds, {within32(aroundMs(model) / kSecond)});
}

Step StepMaker::report(const ClockModel& model) {
  const std::int64_t moment = aroundMs(model) / kSecond;
  const std::int64_t now = std::clamp<std::int64_t>(model.wallMs() / kSecond, 86400, 2147500000);
  if (m_chance.oneIn(6)) return numbers(Act::report, {0, 0});
  return numbers(Act::report, {m_chance.oneIn(2) ? moment : now + m_chance.between(-2, 2),
                               m_chance.oneIn(8) ? 0 : 1});
}

Step StepMaker::jack(const ClockModel&) {
  if (m_chance.oneIn(2)) return numbers(Act::jack, {5, 1});
  return numbers(Act::jack, {m_chance.between(0, 6), m_chance.between(0, 2)});
}

Step StepMaker::observer(const ClockModel&) {
  static const std::vector<std::string> names{"Ann", "Bob", "Eve", "nobody"};
  return texts(m_chance.oneIn(2) ? Act::unobserve : Act::observe, {m_chance.oneOf(names)});
}

// Troubles begin less often than they end.
Step StepMaker::trouble(const ClockModel&) {
  const auto on = static_cast<std::int64_t>(m_chance.oneIn(3));
  static const std::vector<Act> kinds{Act::storeRefuses, Act::storeRefuses, Act::storeSilent,
                                      Act::launchFails, Act::lookupsFail};
  return numbers(m_chance.oneOf(kinds), {on});
}

Step StepMaker::service(const ClockModel&) {
  static const std::vector<std::string> names{Services::physical, Services::management,
                                              Services::security, Services::store};
  return {Act::service, {m_chance.oneIn(4) ? 0 : 1}, {m_chance.oneOf(names)}, {}};
}

Step StepMaker::fallbackFile(const ClockModel& model) {
  static const std::vector<std::string> odd{"",
                                            "2020-01-01T00:00:00+00:0",
                                            "2020-01-01T00:00:00+00:000",
                                            "twenty-five-letters-here!",
                                            " 2021-02-03T04:05:06+00:00 and more",
                                            "2022-01-01T01:00:00+02:00\n"};
  if (m_chance.oneIn(2)) return texts(Act::fallbackFile, {m_chance.oneOf(odd)});
  return texts(Act::fallbackFile, {utcText(aroundMs(model) / kSecond)});
}

Step StepMaker::oddity(const ClockModel& model) {
  switch (m_chance.between(0, 4)) {
    case 0:
      return Step{Act::idle, {}, {}, {}};
    case 1:
      return texts(Act::convert, {utc(model)});
    case 2:
      return numbers(Act::logLevel, {m_chance.between(2, 6)});
    case 3:
      return {Act::mayReset,
              {m_chance.oneIn(3) ? 0 : 1},
              {m_chance.oneIn(2) ? "date-format" : "time-format"},
              {}};
    default:
      return Step{Act::saveFallback, {}, {}, {}};
  }
}

Step StepMaker::restart(const ClockModel& model) {
  std::int64_t missing = 0;
  for (const std::int64_t bit : {1, 2, 4, 8}) missing |= m_chance.oneIn(12) ? bit : 0;
  const std::int64_t wall = m_chance.oneIn(2) ? m_chance.between(0, kDay) : aroundMs(model);
  return numbers(Act::restart, {m_chance.oneIn(2) ? 1 : 0, m_chance.between(0, 6), missing, wall});
}

}  // namespace simulation
