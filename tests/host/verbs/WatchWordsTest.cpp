// The words of `watch`, `wait` and `wait-host`.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "verbs/UsageError.h"
#include "verbs/Verb.h"

namespace host {
namespace {

// The request, or the error line.
std::string readLine(const std::string& line) try {
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return requestOf(verbOf(words), words).dump();
} catch (const UsageError& error) {
  return error.what();
}

TEST(WatchWords, BecomeRequests) {
  const std::pair<const char*, const char*> accepted[] = {
      {"watch dateChangeEvent --for 0.5s timeChangeEvent",
       R"({"verb":"watch","events":["dateChangeEvent","timeChangeEvent"],"where":{},"count":0,"for":500})"},
      {"watch --where dateChangeEventDay=8 --count 1 --where dateChangeEventMonth=-3",
       R"({"verb":"watch","events":[],"where":{"dateChangeEventDay":8,"dateChangeEventMonth":-3},"count":1,"for":0})"},
      {"wait timezoneChangeEvent --where timezoneChangeEventTimezone=LOC=",
       R"({"verb":"wait","events":["timezoneChangeEvent"],"where":{"timezoneChangeEventTimezone":"LOC="},"count":1,"for":0})"},
      {"wait timeChangeEvent --for 1h",
       R"({"verb":"wait","events":["timeChangeEvent"],"where":{},"count":1,"for":3600000})"},
      {"wait-host", R"({"verb":"wait-host"})"},
      {"wait-host 10s", R"({"verb":"wait-host","for":10000})"},
  };
  for (const auto& [words, request] : accepted) EXPECT_EQ(readLine(words), request) << words;
}

TEST(WatchWords, ThatNothingWouldMatchAreRefused) {
  const std::pair<const char*, const char*> rejected[] = {
      {"watch timechangeEvent", "no event \"timechangeEvent\"; did you mean \"timeChangeEvent\"?"},
      {"watch --coun 5", "\"--coun\" is not --where, --count or --for; did you mean \"--count\"?"},
      {"watch --for", "DURATION is missing"},
      {"watch --for 0s", "\"0s\" is not a duration; write `10s`, `0.5s`, `15m`"},
      {"watch --for 10", "\"10\" is not a duration"},
      {"watch --where", "NAME=VALUE is missing"},
      {"watch --where timeChangeEventHours", "is not NAME=VALUE, as in timeChangeEventHours=3"},
      {"watch --where timeChangeEventHour=3", "did you mean \"timeChangeEventHours\"?"},
      {"watch --where hours=3",
       "no event has a parameter \"hours\"; `clockctl events EVENT` lists those of one"},
      {"watch --where timeChangeEventHours=three",
       "\"three\" is not a number; timeChangeEventHours is a decimal integer of 32 bits"},
      {"watch --where timeChangeEventHours=1 --where timeChangeEventHours=2",
       "timeChangeEventHours is given twice"},
      {"watch dateChangeEvent --where timeChangeEventHours=3",
       "\"timeChangeEventHours\" is not a parameter of dateChangeEvent (usage: dateChangeEvent "
       "dateChangeEventDay=INT "},
      {"watch --where dateChangeEventDay=1 --where timeChangeEventHours=3",
       "no event has all of these parameters; name those of one event"},
      {"wait", "EVENT is missing; `watch --count 1` waits for any event (usage: wait EVENT ..."},
      {"wait --for 5s", "EVENT is missing"},
      {"wait dateChangeEvent --count 2", "\"--count\" is not --where or --for"},
      {"wait-host soon", "\"soon\" is not a duration; write `10s`"},
      {"wait-host 1s 2s", "\"2s\" is one word too many"},
  };
  for (const auto& [words, part] : rejected) {
    const std::string error = readLine(words);
    EXPECT_NE(error.find(part), std::string::npos) << words << " -> " << error;
    EXPECT_EQ(error.find('\n'), std::string::npos) << words;
  }
}

}  // namespace
}  // namespace host
