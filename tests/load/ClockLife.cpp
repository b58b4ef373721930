#include "load/ClockLife.h"

#include <ctime>
#include <sstream>

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

Move ClockLife::next() {
  ++m_moves;
  if (m_moves % kMovesBetweenSets == 0) return setByHand();
  if (m_moves % kMovesBetweenZones == 0) return intoAnotherZone();
  return toTheNextHour();
}

Move ClockLife::toTheNextHour() {
  const std::int64_t way = kHour - utc() % kHour;
  m_uptime += way * 1000;
  Move move{{advance(way)}, {}};
  tellTime(move);
  if (fieldsOf(local()).tm_hour == 0) tellDate(move);
  return move;
}

// To half past the hour that it is; the event comes a millisecond later.
Move ClockLife::setByHand() {
  m_atZero += kHour / 2 - utc() % kHour;
  Move move{{set("simple-time", halfPast(fieldsOf(local()).tm_hour)), advance(0)}, {}};
  ++m_uptime;
  tellDate(move);
  tellTime(move);
  return move;
}

// One hour on, or back, a millisecond later; POSIX counts to the west.
Move ClockLife::intoAnotherZone() {
  m_hoursEast = 1 - m_hoursEast;
  ++m_uptime;
  Move move{{set("sntp-tz-offset", std::to_string(m_hoursEast)), advance(0)}, {}};
  Method event("timezoneChangeEvent", Method::call);
  event.addStringParameter("timezoneChangeEventTimezone",
                           m_hoursEast == 0 ? "LOC00:00" : "LOC-1:00", Parameter::in);
  move.events.push_back(encoded(event));
  tellTime(move);
  tellDate(move);
  return move;
}

void ClockLife::tellTime(Move& move) const {
  const std::tm fields = fieldsOf(local());
  Method event("timeChangeEvent", Method::call);
  event.addIntParameter("timeChangeEventHours", fields.tm_hour, Parameter::in);
  event.addIntParameter("timeChangeEventMinutes", fields.tm_min, Parameter::in);
  event.addIntParameter("timeChangeEventSeconds", fields.tm_sec, Parameter::in);
  move.events.push_back(encoded(event));
}

void ClockLife::tellDate(Move& move) const {
  const std::tm fields = fieldsOf(local());
  Method event("dateChangeEvent", Method::call);
  event.addIntParameter("dateChangeEventDay", fields.tm_mday, Parameter::in);
  event.addIntParameter("dateChangeEventMonth", fields.tm_mon + 1, Parameter::in);
  event.addIntParameter("dateChangeEventYear", fields.tm_year + 1900, Parameter::in);
  move.events.push_back(encoded(event));
}

}  // namespace load
