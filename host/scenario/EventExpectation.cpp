#include "scenario/EventExpectation.h"

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>

#include "base/PrintableText.h"
#include "clock/VirtualClock.h"
#include "operator/ClockMoves.h"
#include "scenario/Scenario.h"
#include "scenario/ScenarioDevice.h"
#include "verbs/CallWords.h"
#include "verbs/KnownCall.h"
#include "verbs/KnownNames.h"
#include "verbs/MethodCatalogue.h"
#include "verbs/TimeText.h"
#include "verbs/VerbWords.h"
#include "verbs/WordReader.h"

namespace host {
namespace {

constexpr std::size_t kListed = 5;

struct WantedEvent {
  std::string name;  // empty: any
  std::vector<std::string> parameters;

  std::string text() const {
    std::string words = name;
    for (const std::string& parameter : parameters) words.append(1, ' ').append(parameter);
    return words;
  }
};

// NAME=VALUE; types are not compared.
bool holds(const Method& method, const std::string& word) {
  const Parameter wanted = parseArgument(word);
  return std::any_of(method.getParameters().begin(), method.getParameters().end(),
                     [&](const Parameter& parameter) {
                       return parameter.getName() == wanted.getName() &&
                              valueText(parameter) == valueText(wanted);
                     });
}

bool matches(const Method& event, const WantedEvent& wanted) {
  if (!wanted.name.empty() && event.getName() != wanted.name) return false;
  return std::all_of(wanted.parameters.begin(), wanted.parameters.end(),
                     [&](const std::string& word) { return holds(event, word); });
}

std::string listedEvents(const std::vector<Method>& events) {
  std::vector<std::string> texts;
  for (const Method& event : events) texts.push_back(eventText(event));
  return listed(texts);
}

[[noreturn]] void fail(const std::string& expected, const std::vector<Method>& got) {
  throw ScenarioFailure("expected " + expected + ", got " + listedEvents(got));
}

WantedEvent readEvent(WordReader& words) {
  WantedEvent wanted{words.next("NAME"), {}};
  const MethodRow& event = requireEvent(wanted.name);
  for (const std::string& word : words.rest()) {
    requireParameter(event, parseArgument(word).getName());
    wanted.parameters.push_back(word);
  }
  return wanted;
}

// Lets time pass until the event comes, at most that long. An event that has come already counts.
bool passUntil(ScenarioDevice& device, const WantedEvent& wanted, std::chrono::nanoseconds limit) {
  std::size_t known = 0;
  bool found = false;
  const auto notFoundYet = [&] {
    const std::size_t size = device.events().size();
    found =
        device.events().skipTo([&](const Method& event) { return matches(event, wanted); }, known);
    known = size;
    return !found;
  };
  if (!notFoundYet()) return true;
  VirtualClock& clock = device.device().clock();
  const auto left = VirtualClock::kLastUptime - clock.uptime();
  static_cast<void>(
      clock.advanceTo(clock.uptime() + std::min(limit + kSettling, left), notFoundYet));
  return found;
}

}  // namespace

std::function<void(ScenarioDevice&)> expectEvent(WordReader& words) {
  return [wanted = readEvent(words)](ScenarioDevice& device) {
    device.powerOn();
    const auto isWanted = [&](const Method& event) { return matches(event, wanted); };
    if (!device.events().skipTo(isWanted)) fail("event " + wanted.text(), device.events().all());
  };
}

std::function<void(ScenarioDevice&)> expectNextEvent(WordReader& words) {
  return [wanted = readEvent(words)](ScenarioDevice& device) {
    device.powerOn();
    const std::vector<Method> events = device.events().all();
    if (events.empty() || !matches(events.front(), wanted)) {
      fail("next event " + wanted.text(), events);
    }
    static_cast<void>(device.events().skipTo([](const Method&) { return true; }));
  };
}

std::function<void(ScenarioDevice&)> expectNoEvent(WordReader& words) {
  const WantedEvent unwanted = words.done() ? WantedEvent{} : readEvent(words);
  return [unwanted](ScenarioDevice& device) {
    device.powerOn();
    const std::vector<Method> events = device.events().all();
    const bool found = std::any_of(events.begin(), events.end(),
                                   [&](const Method& event) { return matches(event, unwanted); });
    if (found) fail(unwanted.name.empty() ? "no event" : "no event " + unwanted.text(), events);
  };
}

std::function<void(ScenarioDevice&)> waitForEvent(WordReader& words) {
  constexpr std::string_view kUsage = "wait event NAME [NAME=VALUE ...] within DURATION";
  if (!words.accept("event")) words.failWithUsage("only an event can be waited for");
  const auto rest = words.rest();
  const auto within = std::find(rest.begin(), rest.end(), "within");
  WordReader event({rest.begin(), within}, kUsage);
  const WantedEvent wanted = readEvent(event);
  if (within == rest.end()) words.failWithUsage("within DURATION is missing");
  WordReader time({within + 1, rest.end()}, kUsage);
  time.require("DURATION");
  time.setSubject("wait");
  const std::chrono::seconds limit(readDuration(time, "DURATION").get<std::int64_t>());
  return [wanted, limit](ScenarioDevice& device) {
    device.powerOn();
    if (passUntil(device, wanted, limit)) return;
    fail("event " + wanted.text() + " within " + durationText(limit), device.events().all());
  };
}

std::string eventText(const Method& event) {
  const std::string parameters = parametersText(event);
  return parameters.empty() ? event.getName() : event.getName() + ' ' + parameters;
}

void requireParameters(const std::string& what, std::span<const std::string> wanted,
                       const Method& method) {
  for (const std::string& word : wanted) {
    if (holds(method, word)) continue;
    std::string got = parametersText(method);
    if (got.empty()) got = "no parameters";
    std::string text = "expected ";
    text.append(what).append(word).append(", got ").append(got);
    throw ScenarioFailure(text);
  }
}

std::string listed(const std::vector<std::string>& texts) {
  if (texts.empty()) return "none";
  std::string list = texts.size() > kListed ? "... " : "";
  const std::size_t first = texts.size() - std::min(texts.size(), kListed);
  for (std::size_t i = first; i < texts.size(); ++i) {
    if (i > first) list += "; ";
    list += texts[i];
  }
  return list;
}

}  // namespace host
