// Calls of the clock's interface. Remote calls must get the same answers.

#include <stdexcept>

#include "ClockService.h"
#include "simulation/SteppedTelephone.h"
#include "simulation/Texts.h"

namespace simulation {
namespace {

int whole(std::int64_t number) {
  return static_cast<int>(number);
}

std::string inQuotes(const std::string& text) {
  return '"' + text + '"';
}

const char* flag(bool value) {
  return value ? "true" : "false";
}

// The parameters of a method begin with its name: "setTime" has "setTimeHours".
Method requestOf(const std::string& method, const SteppedTelephone::Arguments& arguments) {
  Method request(method.c_str(), Method::call);
  for (const auto& [name, value] : arguments)
    request.addIntParameter((method + name).c_str(), whole(value), Parameter::in);
  return request;
}

Method requestOf(const std::string& method, const std::string& name, const std::string& text) {
  Method request(method.c_str(), Method::call);
  request.addStringParameter((method + name).c_str(), text, Parameter::in);
  return request;
}

}  // namespace

void SteppedTelephone::applyToClock(const Step& step) {
  const bool remote = !step.texts.empty() && isRemote(step.texts[0]);
  if (step.act >= Act::setTime && step.act <= Act::saveTime)
    remote ? setRemotely(step) : setDirectly(step);
  if (step.act == Act::observe) observe(step.texts[0], true);
  if (step.act == Act::unobserve) observe(step.texts[0], false);
  if (step.act == Act::ask) ask(step);
  if (step.act == Act::invalidCall) invalidCall(step.texts[0]);
}

void SteppedTelephone::setDirectly(const Step& step) {
  const auto& n = step.numbers;
  if (step.act == Act::setTime) answer(m_service->setTime(whole(n[0]), whole(n[1]), whole(n[2])));
  if (step.act == Act::setDate) answer(m_service->setDate(whole(n[0]), whole(n[1]), whole(n[2])));
  if (step.act == Act::setSeconds) m_service->setTime(whole(n[0]));
  if (step.act == Act::saveTime) m_journal.add("-> " + m_service->setFallbackTime());
}

// Records the reply to a caller in the form of a local answer.
void SteppedTelephone::callFor(const Method& request, const std::string& caller) {
  std::string text = m_peers->call(m_service.get(), request, caller);
  const std::string& name = request.getName();
  const std::string prefix = name + "/1 " + name + "Return/1=";
  if (text.rfind(prefix, 0) == 0) text.erase(0, prefix.size());
  if (text.size() > 1 && text.front() == '"') text = text.substr(1, text.size() - 2);
  if (text != "no reply") m_journal.add("-> " + text);
}

// "setTimeInt" has a parameter "setTime", and no reply.
void SteppedTelephone::setRemotely(const Step& step) {
  const auto& n = step.numbers;
  Method request = requestOf("setFallbackTime", {});
  if (step.act == Act::setTime)
    request = requestOf("setTime", {{"Hours", n[0]}, {"Minutes", n[1]}, {"Seconds", n[2]}});
  if (step.act == Act::setDate)
    request = requestOf("setDate", {{"Day", n[0]}, {"Month", n[1]}, {"Year", n[2]}});
  if (step.act == Act::setSeconds) {
    request = requestOf("setTimeInt", {{"", 0}});
    request.addIntParameter("setTime", whole(n[0]), Parameter::in);
  }
  callFor(request, step.texts[0]);
}

void SteppedTelephone::observe(const std::string& name, bool begins) {
  if (isRemote(name))
    return callFor(requestOf(begins ? "observeTimeEvents" : "unobserveTimeEvents", {}), name);
  auto& observer = m_observers[name];
  if (!observer && name != "nobody") {
    observer = std::make_unique<support::JournalObserver>(m_journal, name);
    // At this moment TZ has the new zone, and the script still has the former one.
    observer->zoneDetail = [] { return " in force: " + zoneInForce() + " after " + script(); };
  }
  answer(begins ? m_service->observeTimeEvents(observer.get())
                : m_service->unobserveTimeEvents(observer.get()));
}

// Records a reply that differs from the expected one. Each result is the part of a parameter's name
// between method and "Return", and its value.
void SteppedTelephone::expect(const Method& request, const Results& results) {
  const std::string& name = request.getName();
  std::string wanted = name + "/1";
  for (const auto& [end, value] : results) wanted += " " + name + end + "Return/1=" + value;
  const std::string text = m_peers->call(m_service.get(), request, "peer one");
  if (text != wanted) m_journal.add("reply " + text + ", should be " + wanted);
}

void SteppedTelephone::ask(const Step& step) {
  askNow();
  askAboutText(step.texts[0]);
  askAboutNumbers(step.numbers);
  askForAlarm(step.texts[0]);
  try {
    m_journal.add("-> " + m_service->convertUtcStringToLocalString(step.texts[0]));
  } catch (const std::logic_error&) {
    m_journal.add("-> a logic error");
  }
}

void SteppedTelephone::askNow() {
  int a = 0, b = 0, c = 0;
  const auto number = [](int value) { return std::to_string(value); };
  expect(requestOf("getTime", {}), {{"String", inQuotes(m_service->getTime())}});
  expect(requestOf("getDate", {}), {{"String", inQuotes(m_service->getDate())}});
  expect(requestOf("getDateShort", {}), {{"String", inQuotes(m_service->getDateShort())}});
  expect(requestOf("getTimeVal", {}), {{"", number(m_service->getTimeVal())}});
  expect(requestOf("getDisplayTimeVal", {}), {{"", number(m_service->getDisplayTimeVal())}});
  expect(requestOf("isTimeSourceSntp", {}), {{"", flag(m_service->isTimeSourceSntp())}});
  m_service->getTime(a, b, c);
  expect(requestOf("getTimeInts", {}),
         {{"Hours", number(a)}, {"Minutes", number(b)}, {"Seconds", number(c)}});
  m_service->getDate(a, b, c);
  expect(requestOf("getDateInts", {}),
         {{"Day", number(a)}, {"Month", number(b)}, {"Year", number(c)}});
}

// A request that lacks its text gets a reply without parameters.
void SteppedTelephone::askAboutText(const std::string& utc) {
  const auto about = [&](const std::string& method, const Results& results) {
    expect(requestOf(method, "String", utc), results);
    expect(requestOf(method, "Text", utc), {});
  };
  const auto number = [](int value) { return std::to_string(value); };
  int h = 0, m = 0, s = 0, day = 0, month = 0, year = 0;
  const bool timed = m_service->getTime(utc, h, m, s);
  const bool dated = m_service->getDate(utc, day, month, year);
  const std::string time = m_service->getTime(utc);
  const std::string date = m_service->getDate(utc);
  const std::string shortDate = m_service->getDateShort(utc);
  if (timed) m_journal.add("time " + time);
  m_journal.add(print("%s: time %d %d %d", flag(timed), h, m, s));
  m_journal.add(print("%s: date %d %d %d", flag(dated), day, month, year));
  m_journal.add("date " + date);
  m_journal.add("short date " + shortDate);
  about("getTimeUTCStr", {{"String", inQuotes(time)}});
  about("getDateUTCStr", {{"String", inQuotes(date)}});
  about("getDateShortUTCStr", {{"String", inQuotes(shortDate)}});
  about("getTimeUTCStrAndInts",
        {{"", flag(timed)}, {"Hours", number(h)}, {"Minutes", number(m)}, {"Seconds", number(s)}});
  about(
      "getDateUTCStrAndInts",
      {{"", flag(dated)}, {"Day", number(day)}, {"Month", number(month)}, {"Year", number(year)}});
}

// A setter that lacks a parameter does nothing.
void SteppedTelephone::askAboutNumbers(const std::vector<std::int64_t>& n) {
  const std::string utc = m_service->getUTCTime(whole(n[0]));
  const std::string fields = m_service->getUTCTime(whole(n[1]), whole(n[2]), whole(n[3]),
                                                   whole(n[4]), whole(n[5]), whole(n[6]));
  m_journal.add("UTC " + utc);
  m_journal.add("UTC " + fields);
  expect(requestOf("getUTCTimeTimeVal", {{"Time", n[0]}}), {{"String", inQuotes(utc)}});
  expect(requestOf("getUTCTimeTimeVal", {}), {});
  Arguments six{{"Hours", n[1]}, {"Mins", n[2]},  {"Secs", n[3]},
                {"Day", n[4]},   {"Month", n[5]}, {"Year", n[6]}};
  expect(requestOf("getUTCTimeInts", six), {{"String", inQuotes(fields)}});
  six.erase(six.begin() + (n[0] & 3));
  expect(requestOf("getUTCTimeInts", six), {{"String", "\"\""}});
  expect(requestOf("setTime", {{"Hours", n[1]}, {"Minutes", n[2]}}), {{"", "false"}});
  expect(requestOf("setDate", {{"Day", n[1]}, {"Year", n[2]}}), {{"", "false"}});
}

// Alarms are declared, but not implemented.
void SteppedTelephone::askForAlarm(const std::string& utc) {
  std::string time = utc;
  if (m_service->setAlarmClock(time, nullptr) != 0 || m_service->cancelAlarmClock(1))
    m_journal.add("an alarm is set");
  expect(requestOf("setAlarmClock", {}), {});
  expect(requestOf("setAlarmClock", "AlarmTime", utc), {{"", "0"}});
  expect(requestOf("cancelAlarmClock", {{"AlarmId", 1}}), {{"", "false"}});
}

// An unknown method, bytes that cannot be decoded, an unknown codec, or a call without a service:
// no reply.
void SteppedTelephone::invalidCall(const std::string& kind) {
  const std::string name = kind == "unknown" ? "ClockTime" : "garbage";
  Executable* const service = kind == "nobody" ? nullptr : m_service.get();
  const std::string codec = kind == "codec" ? "morse" : "text";
  const std::string text = m_peers->call(service, requestOf(name, {}), "peer two", codec);
  if (text != "no reply") m_journal.add("an invalid call gets a reply");
}

}  // namespace simulation
