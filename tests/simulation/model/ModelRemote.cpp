// What the model answers to remote calls.

#include "simulation/Wire.h"
#include "simulation/model/ClockModel.h"
#include "simulation/model/Texts.h"

namespace simulation {
namespace {

std::string whole(const std::string& name, std::int64_t value) {
  return " " + name + "/1=" + std::to_string(value);
}

std::string text(const std::string& name, const std::string& value) {
  return " " + name + "/1=\"" + value + "\"";
}

std::string flag(const std::string& name, bool value) {
  return " " + name + "/1=" + (value ? "true" : "false");
}

const Argument* find(const Step& step, const std::string& name, bool isText) {
  for (const Argument& argument : step.arguments) {
    if (argument.name == name && argument.isText == isText) return &argument;
  }
  return nullptr;
}

std::optional<std::string> textOf(const Step& step, const std::string& name) {
  const Argument* const found = find(step, name, true);
  return found == nullptr ? std::nullopt : std::optional(found->text);
}

// All of them, or nothing.
std::optional<std::vector<std::int64_t>> numbersOf(const Step& step,
                                                   const std::vector<std::string>& names) {
  std::vector<std::int64_t> numbers;
  for (const std::string& name : names) {
    const Argument* const found = find(step, name, false);
    if (found == nullptr) return std::nullopt;
    numbers.push_back(found->number);
  }
  return numbers;
}

std::string threeOf(const std::string& method, const char* const (&names)[3],
                    const std::optional<Civil>& reading, bool date) {
  const Civil zero{0, 0, 0, 0, 0, 0};
  const Civil& r = reading ? *reading : zero;
  return whole(method + names[0] + "Return", date ? r.day : r.hour) +
         whole(method + names[1] + "Return", date ? r.month : r.minute) +
         whole(method + names[2] + "Return", date ? r.year : r.second);
}

constexpr const char* kTimeNames[3] = {"Hours", "Minutes", "Seconds"};
constexpr const char* kDateNames[3] = {"Day", "Month", "Year"};

}  // namespace

void ClockModel::called(const Step& step) {
  const std::string& method = step.texts[0];
  if (step.texts[2] != "plain") {
    m_journal.add("log 2 ClockServiceInvoker: Failed to decode msg");
    return;
  }
  if (const auto parameters = answer(step)) {
    m_journal.add(step.texts[1] + " is answered 1 " + method + *parameters);
  }
}

std::optional<std::string> ClockModel::answer(const Step& step) {
  if (auto now = answerNow(step.texts[0])) return now;
  if (auto utc = answerUtc(step)) return utc;
  if (auto fields = answerFields(step)) return fields;
  if (auto observer = answerObserver(step)) return observer;
  return answerSet(step);
}

std::optional<std::string> ClockModel::answerNow(const std::string& method) const {
  const Civil local = localNow();
  const SettingsModel& s = m_settings;
  if (method == "getTime")
    return text("getTimeStringReturn", timeText(local.hour, local.minute, s.timeFormat));
  if (method == "getDate") return text("getDateStringReturn", dateText(local, s.dateFormat));
  if (method == "getDateShort")
    return text("getDateShortStringReturn", shortDateText(local, s.dateFormat));
  if (method == "getTimeInts") return threeOf(method, kTimeNames, local, false);
  if (method == "getDateInts") return threeOf(method, kDateNames, local, true);
  if (method == "getTimeVal") return whole("getTimeValReturn", within32(now()));
  if (method == "getDisplayTimeVal")
    return whole("getDisplayTimeValReturn", within32(secondsTo(local)));
  if (method == "isTimeSourceSntp") return flag("isTimeSourceSntpReturn", m_timeReceived);
  return std::nullopt;
}

std::optional<std::string> ClockModel::answerUtc(const Step& step) const {
  const std::string& method = step.texts[0];
  const bool known = method == "getTimeUTCStr" || method == "getTimeUTCStrAndInts" ||
                     method == "getDateUTCStr" || method == "getDateShortUTCStr" ||
                     method == "getDateUTCStrAndInts";
  if (!known) return std::nullopt;
  const auto utc = textOf(step, method + "String");
  if (!utc) return "";
  const auto local = localOfText(*utc);
  const Civil shown = local.value_or(Civil{0, 0, 0, 0, 0, 0});
  const SettingsModel& s = m_settings;
  // A text that does not parse is a record of zeroes, whose time of day is midnight UTC.
  const Civil record = local.value_or(localOfUtc({1900, 1, 0}));
  if (method == "getTimeUTCStr")
    return text("getTimeUTCStrStringReturn", timeText(record.hour, record.minute, s.timeFormat));
  if (method == "getDateUTCStr")
    return text("getDateUTCStrStringReturn", dateText(shown, s.dateFormat));
  if (method == "getDateShortUTCStr")
    return text("getDateShortUTCStrStringReturn", shortDateText(shown, s.dateFormat));
  const bool date = method == "getDateUTCStrAndInts";
  return flag(method + "Return", local.has_value()) +
         threeOf(method, date ? kDateNames : kTimeNames, local, date);
}

std::optional<std::string> ClockModel::answerFields(const Step& step) const {
  if (step.texts[0] == "getUTCTimeTimeVal") {
    const auto seconds = numbersOf(step, {"getUTCTimeTimeValTime"});
    if (!seconds) return "";
    return text("getUTCTimeTimeValStringReturn",
                utcText(seconds->front() == 0 ? now() : seconds->front()));
  }
  if (step.texts[0] != "getUTCTimeInts") return std::nullopt;
  const auto n =
      numbersOf(step, {"getUTCTimeIntsYear", "getUTCTimeIntsMonth", "getUTCTimeIntsDay",
                       "getUTCTimeIntsHours", "getUTCTimeIntsMins", "getUTCTimeIntsSecs"});
  if (!n) return text("getUTCTimeIntsStringReturn", "");
  const auto at = [&n](std::size_t i) { return static_cast<int>((*n)[i]); };
  return text("getUTCTimeIntsStringReturn", print("%04d-%02d-%02dT%02d:%02d:%02d+00:00",
                                                  at(0) + 1900, at(1), at(2), at(3), at(4), at(5)));
}

std::optional<std::string> ClockModel::answerSet(const Step& step) {
  const std::string& method = step.texts[0];
  if (method == "setFallbackTime") return text("setFallbackTimeReturn", saveFallback());
  if (method == "setTime") {
    const auto n = numbersOf(step, {"setTimeHours", "setTimeMinutes", "setTimeSeconds"});
    return flag("setTimeReturn", n && setTime((*n)[0], (*n)[1], (*n)[2]));
  }
  if (method == "setDate") {
    const auto n = numbersOf(step, {"setDateDay", "setDateMonth", "setDateYear"});
    return flag("setDateReturn", n && setDate((*n)[0], (*n)[1], (*n)[2]));
  }
  if (method == "setTimeInt") {
    if (const auto n = numbersOf(step, {"setTime"})) setSeconds(n->front());
    return std::nullopt;
  }
  m_journal.add("log 2 ClockServiceInvoker: Invalid Message, " + wireOf(step));
  return std::nullopt;
}

std::optional<std::string> ClockModel::answerObserver(const Step& step) {
  const std::string& method = step.texts[0];
  const std::string observer = isPeer(step.texts[1]) ? step.texts[1] : "nobody";
  if (method == "cancelAlarmClock") return flag("cancelAlarmClockReturn", false);
  if (method != "observeTimeEvents" && method != "unobserveTimeEvents" && method != "setAlarmClock")
    return std::nullopt;
  m_journal.add("proxy ClockServiceObserverIfc for " + step.texts[1]);
  if (method == "observeTimeEvents") return flag("observeTimeEventsReturn", observe(observer));
  if (method == "unobserveTimeEvents")
    return flag("unobserveTimeEventsReturn", unobserve(observer));
  if (!textOf(step, "setAlarmClockAlarmTime")) return "";
  return whole("setAlarmClockReturn", 0);
}

}  // namespace simulation
