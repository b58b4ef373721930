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

}  // namespace
}  // namespace host
