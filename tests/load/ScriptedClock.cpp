#include "load/ScriptedClock.h"

#include <ctime>
#include <sstream>
#include <utility>

#include "Method.h"
#include "remote/MessagePackCodec.h"

namespace load {
namespace {

constexpr std::int64_t kHour = 3600;
constexpr std::uint64_t kMovesBetweenSets = 7;
constexpr std::uint64_t kMovesBetweenZones = 11;

std::tm fieldsOf(std::int64_t seconds) {
  const auto time = static_cast<std::time_t>(seconds);
  std::tm fields{};
  ::gmtime_r(&time, &fields);
  return fields;
}

std::string encoded(Method& event) {
  std::stringstream stream;
  host::MessagePackCodec().encode(event, stream);
  return stream.str();
}

std::string encoded(const std::string& name,
                    const std::vector<std::pair<const char*, int>>& values) {
  Method event(name.c_str(), Method::call);
  for (const auto& [suffix, value] : values) {
    event.addIntParameter((name + suffix).c_str(), value, Parameter::in);
  }
  return encoded(event);
}

std::string advance(std::int64_t seconds) {
  return R"({"verb":"clock","action":"advance","seconds":)" + std::to_string(seconds) + "}";
}

std::string set(const std::string& key, const std::string& value) {
  return R"({"verb":"set","key":")" + key + R"(","value":")" + value + R"("})";
}

std::string halfPast(int hour) {
  return (hour < 10 ? "0" : "") + std::to_string(hour) + ":30";
}

}  // namespace

Move ScriptedClock::next() {
  ++m_count;
  if (m_count % kMovesBetweenSets == 0) return setByHand();
  if (m_count % kMovesBetweenZones == 0) return changeZone();
  return toTheNextHour();
}

Move ScriptedClock::toTheNextHour() {
  const std::int64_t seconds = kHour - utc() % kHour;
  m_uptime += seconds * 1000;
  Move move{{advance(seconds)}, {timeEvent()}};
  if (fieldsOf(local()).tm_hour == 0) move.events.push_back(dateEvent());
  return move;
}

// To half past the current hour; the events come a millisecond later.
Move ScriptedClock::setByHand() {
  m_utcAtStart += kHour / 2 - utc() % kHour;
  const std::string time = halfPast(fieldsOf(local()).tm_hour);
  ++m_uptime;
  return {{set("simple-time", time), advance(0)}, {dateEvent(), timeEvent()}};
}

// An hour to the east, or back, a millisecond later; POSIX counts to the west.
Move ScriptedClock::changeZone() {
  m_hoursEast = 1 - m_hoursEast;
  ++m_uptime;
  Method zone("timezoneChangeEvent", Method::call);
  zone.addStringParameter("timezoneChangeEventTimezone", m_hoursEast == 0 ? "LOC00:00" : "LOC-1:00",
                          Parameter::in);
  return {{set("sntp-tz-offset", std::to_string(m_hoursEast)), advance(0)},
          {encoded(zone), timeEvent(), dateEvent()}};
}

std::string ScriptedClock::timeEvent() const {
  const std::tm time = fieldsOf(local());
  return encoded("timeChangeEvent",
                 {{"Hours", time.tm_hour}, {"Minutes", time.tm_min}, {"Seconds", time.tm_sec}});
}

std::string ScriptedClock::dateEvent() const {
  const std::tm date = fieldsOf(local());
  return encoded(
      "dateChangeEvent",
      {{"Day", date.tm_mday}, {"Month", date.tm_mon + 1}, {"Year", date.tm_year + 1900}});
}

}  // namespace load
