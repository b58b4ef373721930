#include "verbs/VerbWords.h"

#include <nlohmann/json.hpp>

#include "base/LogLevels.h"
#include "verbs/CallWords.h"
#include "verbs/Choices.h"
#include "verbs/TimeText.h"
#include "verbs/WordReader.h"

namespace host {
namespace {

int logLevel(WordReader& words) {
  const int level = words.integer("N");
  if (level < 0 || level > kLogTrace) {
    WordReader::fail("N is a level of the log, 0 (fatal errors) to 6 (everything)");
  }
  return level;
}

// JSON carries UTF-8 only, and so does the host's store.
Json utf8Text(const std::string& word, std::string_view usage) {
  Json text = word;
  try {
    static_cast<void>(text.dump());
  } catch (const Json::type_error&) {
    WordReader::fail(std::string(usage) + " must be UTF-8 text");
  }
  return text;
}

// Reads all words into `text`. True: it is what follows `local`, which may be quoted with the rest.
bool readLocal(WordReader& words, std::string& text) {
  constexpr std::string_view kLocal = "local ";
  const bool local = words.accept("local");
  text = words.restAsText();
  if (local || !text.starts_with(kLocal)) return local;
  text.erase(0, kLocal.size());
  return true;
}

}  // namespace

Json readText(WordReader& words, std::string_view usage) {
  return utf8Text(words.next(usage), usage);
}

Json readSetting(WordReader& words, std::string_view) {
  const Json key = readText(words, "KEY");
  if (key != kTimeKey) return {{"key", key}, {"value", readText(words, "VALUE")}};
  words.require("VALUE");
  std::string text;
  const char* const member = readLocal(words, text) ? "local" : "value";
  return {{"key", key}, {member, utf8Text(text, "VALUE")}};
}

Json readOptionalText(WordReader& words, std::string_view usage) {
  return words.done() ? Json() : readText(words, usage.substr(1, usage.size() - 2));
}

Json readInteger(WordReader& words, std::string_view usage) {
  return words.integer(usage);
}

Json readChoice(WordReader& words, std::string_view usage) {
  return words.choice(listedValues(usage));
}

Json readOption(WordReader& words, std::string_view usage) {
  return words.accept(usage.substr(1, usage.size() - 2));
}

Json readSpeed(WordReader& words, std::string_view usage) {
  const std::string& word = words.next(usage);
  if (!parseSpeed(word)) words.failForm(word, "a speed", kSpeedForms);
  return word;
}

Json readDuration(WordReader& words, std::string_view) {
  const std::string word = words.restAsText();
  const auto duration = parseDuration(word);
  if (!duration) words.failForm(word, "a duration", kDurationForms);
  return duration->count();
}

std::int64_t readRealDuration(WordReader& words) {
  const std::string& word = words.next("DURATION");
  const auto limit = parseRealDuration(word);
  if (!limit) words.failForm(word, "a duration", kRealDurationForms);
  return limit->count();
}

Json readAdvance(WordReader& words, std::string_view) {
  words.require("DURATION");
  const std::string word = words.restAsText();
  if (const auto duration = parseDuration(word)) return {{"seconds", duration->count()}};
  if (const auto exact = parseExactDuration(word)) return {{"microseconds", exact->count()}};
  words.failForm(word, "a duration", std::string(kDurationForms) + ", or exactly `2.5s`");
}

Json readRecord(WordReader& words, std::string_view) {
  Json request = {{"count", 0}, {"for", 0}, {"overwrite", false}};
  while (!words.done()) {
    if (words.accept("--overwrite")) {
      request["overwrite"] = true;
    } else if (words.accept("--count")) {
      const int count = words.integer("N");
      if (count < 1) WordReader::fail("N is the number of steps to record, 1 or more");
      request["count"] = count;
    } else if (words.accept("--for")) {
      request["for"] = readRealDuration(words);
    } else {
      words.end();
    }
  }
  return request;
}

Json readInstant(WordReader& words, std::string_view) {
  words.require("UTC");
  const std::string word = words.restAsText();
  const auto instant = parseInstant(word);
  if (!instant) words.failForm(word, "an instant", kInstantForms);
  return instant->count();
}

Json readInstantOrLocal(WordReader& words, std::string_view) {
  words.require("UTC");
  std::string text;
  if (readLocal(words, text)) {
    if (!parseLocal(text)) words.failForm(text, "a local time", kLocalForms);
    return {{"local", text}};
  }
  if (const auto instant = parseInstant(text)) return {{"seconds", instant->count()}};
  words.failForm(text, "an instant",
                 parseLocal(text) ? "`local` before it" : std::string(kInstantForms));
}

Json readLog(WordReader& words, std::string_view) {
  Json request = {{"follow", false}};
  while (!words.done()) {
    if (words.accept("--follow")) {
      request["follow"] = true;
    } else if (words.accept("--level")) {
      request["level"] = logLevel(words);
    } else {
      words.end();
    }
  }
  return request;
}

Json readLogLevel(WordReader& words, std::string_view) {
  if (words.done()) return Json::object();
  return {{"level", logLevel(words)}};
}

Json readMost(WordReader& words, std::string_view) {
  if (words.done()) return Json::object();
  const int count = words.integer("N");
  if (count < 1 || count > kMostRows) {
    WordReader::fail("N is how many to list, 1 to " + std::to_string(kMostRows));
  }
  return {{"count", count}};
}

Json readUpcoming(WordReader& words, std::string_view) {
  Json wanted = Json::object();
  while (!words.done()) {
    if (words.accept("--until")) {
      const std::string& word = words.next("UTC");
      const auto instant = parseInstant(word);
      if (!instant) words.failForm(word, "an instant", kInstantForms);
      wanted["until"] = instant->count();
    } else if (words.accept("--plot")) {
      const std::string file = readText(words, "FILE");
      if (file.empty()) WordReader::fail("--plot: the path is empty; name a file");
      wanted["plot"] = file;
    } else {
      wanted.update(readMost(words, "N"));
    }
  }
  return wanted;
}

Json readArguments(WordReader& words, std::string_view) {
  Json arguments = Json::array();
  while (!words.done()) {
    Json argument = readText(words, "NAME=VALUE");
    static_cast<void>(parseArgument(argument.get_ref<const std::string&>()));
    arguments.push_back(std::move(argument));
  }
  return arguments;
}

}  // namespace host
