#include "scenario/RecordedWords.h"

#include <algorithm>
#include <exception>
#include <nlohmann/json.hpp>

#include "base/Ascii.h"
#include "base/ReplaceAll.h"
#include "scenario/RecordedEntry.h"
#include "verbs/CallWords.h"
#include "verbs/CheckedRequest.h"
#include "verbs/KnownNames.h"
#include "verbs/MethodCatalogue.h"
#include "verbs/NamedRows.h"
#include "verbs/TimeText.h"
#include "verbs/UsageError.h"
#include "verbs/Verb.h"

namespace host {
namespace {

using Words = std::vector<std::string>;
using Type = MethodParameter::Type;

constexpr std::string_view kShuttingDown = "the host is shutting down";

bool needsNoQuotes(char letter) {
  constexpr std::string_view kPlain = "_.:+=/,;-|";
  return isLetter(letter) || isDigit(letter) || kPlain.find(letter) != std::string_view::npos;
}

std::string quotedWord(const std::string& word) {
  if (!word.empty() && std::all_of(word.begin(), word.end(), needsNoQuotes)) return word;
  const std::string escaped = replaceAll(replaceAll(word, "\\", "\\\\"), "\"", "\\\"");
  return '"' + replaceAll(escaped, "\n", "\\n") + '"';
}

std::string textOf(const Json& value) {
  return value.is_string() ? value.get<std::string>() : value.dump();
}

// NAME=VALUE that is read as the same type.
std::string argumentOf(const std::string& name, const Json& value) {
  const std::string text = textOf(value);
  const bool looksLikeInt = value.is_string() && parseInteger(text).has_value();
  return name + (looksLikeInt ? ":string=" : "=") + text;
}

bool isOfType(const Json& value, Type type) {
  return type == Type::integer ? value.is_number_integer() : value.is_string();
}

// isKnown: a scenario can express the call. isComplete: the service also understands it.
bool isKnown(const MethodRow& row, const Json& parameters) {
  return std::all_of(parameters.items().begin(), parameters.items().end(), [&](const auto& each) {
    return rowNamed(row.request, each.key()) != nullptr && !each.value().is_boolean();
  });
}

bool isComplete(const MethodRow& row, const Json& parameters) {
  return std::all_of(row.request.begin(), row.request.end(), [&](const MethodParameter& each) {
    const auto found = parameters.find(std::string(each.name));
    return found != parameters.end() && isOfType(*found, each.type);
  });
}

bool reportsFalse(const Json& parameters) {
  return std::any_of(parameters.begin(), parameters.end(),
                     [](const Json& value) { return value == Json(false); });
}

void append(Words& words, const Json& parameters) {
  for (const auto& [name, value] : parameters.items()) words.push_back(argumentOf(name, value));
}

// An error line without its advice after the semicolon.
std::string causeOf(const std::string& error) {
  return error.substr(0, error.find(';'));
}

// "clock advance" and "clock jump", whose words are not members of the request.
Words clockWords(const Json& request) {
  const std::string action = textOf(request.at("action"));
  Words words = {"clock", action};
  if (request.contains("microseconds")) {
    const std::chrono::microseconds exact(request["microseconds"].get<std::int64_t>());
    words.push_back(exactDurationText(exact));
  } else if (request.contains("local")) {
    const std::string local = textOf(request["local"]);
    const std::size_t blank = std::min(local.find(' '), local.size() - 1);
    words.insert(words.end(), {"local", local.substr(0, blank), local.substr(blank + 1)});
  } else if (request.contains("seconds")) {
    const std::chrono::seconds seconds(request["seconds"].get<std::int64_t>());
    words.push_back(action == "jump" ? instantText(seconds)
                                     : std::to_string(seconds.count()) + 's');
  } else {
    for (const char* const name : {"speed", "landmark"}) {
      if (request.contains(name)) words.push_back(textOf(request[name]));
    }
  }
  return words;
}

// The words that requestOf() makes this request of.
Words wordsOf(const Json& request) {
  if (request.at("verb") == "clock") return clockWords(request);
  Words words;
  for (const char* const name : {"verb", "what", "key", "value", "local", "plug", "status"}) {
    if (!request.contains(name)) continue;
    if (name == std::string_view("local")) words.emplace_back("local");
    words.push_back(textOf(request[name]));
  }
  return words;
}

// Throws UsageError, Json::exception: a scenario refuses these words. done: not in `expect
// refused`.
void requireWritable(const Words& words, const Json& request, bool done) {
  Json read = requestOf(verbOf(words), words);
  if (done) read = checkedRequest(std::move(read));
  if (nlohmann::json(read) != nlohmann::json(request)) throw UsageError("it has further members");
  requireKnownKey(request);
}

}  // namespace

std::string lineOf(const Words& words) {
  std::string line;
  for (const std::string& word : words) line += (line.empty() ? "" : " ") + quotedWord(word);
  return line;
}

std::optional<RecordedStep> recordedCall(const Json& call, const Json& reply, bool certain) {
  if (call.contains("undecodable") || call.contains("clipped")) return std::nullopt;
  const std::string name = call.at("method");
  const Json& parameters = call.at("parameters");
  if (name == "observeTimeEvents" || name == "unobserveTimeEvents") return std::nullopt;
  Words words = {"call", name};
  append(words, parameters);
  const MethodRow* const row = rowNamed(remoteMethods(), name);
  const auto unwritable = [&](const char* why) { return RecordedStep{lineOf(words), why}; };
  if (row == nullptr) return unwritable("the method is not known");
  if (!isKnown(*row, parameters)) return unwritable("a parameter is not known");
  const bool complete = isComplete(*row, parameters);
  const Json answer = reply.is_null() ? Json::object() : reply.value("parameters", Json::object());
  if (row->replies() && answer.empty()) return RecordedStep{"expect refused " + lineOf(words)};
  const bool fails = reportsFalse(answer);
  if (!fails && !complete) return unwritable("a parameter is missing or of another type");
  if (!fails && (!row->replies() || !certain)) return RecordedStep{lineOf(words)};
  append(words, answer);
  return RecordedStep{(fails ? "expect false " : "expect ") + lineOf(words)};
}

std::optional<RecordedStep> recordedRequest(const Json& request, const Json& reply, bool certain) {
  if (onlyReads(request) && !isAmong(request, "verb", {"get"})) return std::nullopt;
  const bool done = reply.value("ok", false);
  if (reply.value("error", "") == kShuttingDown) return std::nullopt;
  try {
    Words words = wordsOf(request);
    requireWritable(words, request, done);
    if (!done) return RecordedStep{"expect refused " + lineOf(words)};
    const bool expected = words.front() == "get" && certain && reply.contains("value");
    if (expected) words.push_back(textOf(reply["value"]));
    return RecordedStep{(expected ? "expect " : "") + lineOf(words)};
  } catch (const std::exception& error) {
    return RecordedStep{request.dump(-1, ' ', false, Json::error_handler_t::replace),
                        causeOf(error.what())};
  }
}

RecordedStep recordedEvent(const Json& event, EventTime time) {
  constexpr std::string_view kSeconds = "timeChangeEventSeconds";
  Words words = {"expect", "event", event.at("method")};
  if (time == EventTime::unknown) return {lineOf(words)};
  for (const auto& [name, value] : event.at("parameters").items()) {
    if (time == EventTime::late && name == kSeconds) continue;
    words.push_back(name + '=' + textOf(value));
  }
  return {lineOf(words)};
}

}  // namespace host
