// The words of `watch`, `wait` and `wait-host`.
#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/PrintableText.h"
#include "verbs/CallWords.h"
#include "verbs/DidYouMean.h"
#include "verbs/KnownCall.h"
#include "verbs/KnownNames.h"
#include "verbs/MethodCatalogue.h"
#include "verbs/NamedRows.h"
#include "verbs/TimeText.h"
#include "verbs/VerbWords.h"
#include "verbs/WordReader.h"

namespace host {
namespace {

constexpr std::string_view kWatchOptions[] = {"--where", "--count", "--for"};
constexpr std::string_view kWaitOptions[] = {"--where", "--for"};

int readNumber(WordReader& words) {
  const int count = words.integer("N");
  if (count < 1) WordReader::fail("N is the number of events to wait for, 1 or more");
  return count;
}

const MethodParameter* parameterOf(std::string_view name) {
  for (const MethodRow& event : remoteEvents()) {
    if (const auto* const found = rowNamed(event.request, name)) return found;
  }
  return nullptr;
}

Json valueFor(const MethodParameter& parameter, const std::string& text) {
  if (parameter.type == MethodParameter::Type::text) return text;
  if (const auto number = parseInteger(text)) return *number;
  WordReader::fail(quotedText(text) + " is not a number; " + std::string(parameter.name) +
                   " is a decimal integer of 32 bits");
}

// NAME=VALUE.
void readWhere(WordReader& words, Json& where) {
  const std::string word = readText(words, "NAME=VALUE");
  const std::size_t equals = word.find('=');
  if (equals == std::string::npos) {
    WordReader::fail(quotedText(word) + " is not NAME=VALUE, as in timeChangeEventHours=3");
  }
  const std::string name = word.substr(0, equals);
  const MethodParameter* const parameter = parameterOf(name);
  if (parameter == nullptr) {
    std::vector<std::string_view> names;
    for (const MethodRow& event : remoteEvents()) {
      for (const MethodParameter& each : event.request) names.push_back(each.name);
    }
    WordReader::fail("no event has a parameter " + quotedText(name) +
                     suggestion(name, names, "; `clockctl events EVENT` lists those of one"));
  }
  if (where.contains(name)) WordReader::fail(name + " is given twice; give it once");
  where[name] = valueFor(*parameter, word.substr(equals + 1));
}

bool hasAll(const MethodRow& event, const Json& where) {
  const auto wanted = where.items();
  return std::all_of(wanted.begin(), wanted.end(), [&](const auto& each) {
    return rowNamed(event.request, each.key()) != nullptr;
  });
}

// Otherwise nothing would ever match.
void requireParameters(const Json& events, const Json& where) {
  for (const std::string name : events) {
    for (const auto& each : where.items()) requireParameter(requireEvent(name), each.key());
  }
  const auto all = remoteEvents();
  if (std::any_of(all.begin(), all.end(), [&](const auto& row) { return hasAll(row, where); })) {
    return;
  }
  WordReader::fail("no event has all of these parameters; name those of one event");
}

Json readEvents(WordReader& words, std::span<const std::string_view> options) {
  Json request = {{"events", Json::array()}, {"where", Json::object()}, {"count", 0}, {"for", 0}};
  while (!words.done()) {
    if (!words.startsWith("--")) {
      request["events"].push_back(requireEvent(words.next("EVENT")).name);
      continue;
    }
    const std::string& option = words.choice(options);
    if (option == "--where") readWhere(words, request["where"]);
    if (option == "--count") request["count"] = readNumber(words);
    if (option == "--for") request["for"] = readRealDuration(words);
  }
  requireParameters(request["events"], request["where"]);
  return request;
}

}  // namespace

Json readWatch(WordReader& words, std::string_view) {
  return readEvents(words, kWatchOptions);
}

Json readWait(WordReader& words, std::string_view) {
  Json request = readEvents(words, kWaitOptions);
  if (request["events"].empty()) {
    words.failWithUsage("EVENT is missing; `watch --count 1` waits for any event");
  }
  request["count"] = 1;
  return request;
}

Json readHostLimit(WordReader& words, std::string_view) {
  return words.done() ? Json::object() : Json{{"for", readRealDuration(words)}};
}

}  // namespace host
