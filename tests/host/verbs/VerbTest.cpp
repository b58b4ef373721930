#include <gtest/gtest.h>

#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>

#include "base/PrintableText.h"
#include "verbs/UsageError.h"
#include "verbs/VerbTable.h"

namespace host {
namespace {

using Words = std::vector<std::string>;

constexpr const char* kHuge = "99999999999999999999";  // no number of 64 bits

// The request, or the error line.
std::string requestFor(const Words& words) {
  try {
    return requestOf(verbOf(words), words).dump();
  } catch (const UsageError& error) {
    return error.what();
  }
}

std::string requestFor(const std::string& line) {
  std::istringstream stream(line);
  Words words;
  for (std::string word; stream >> std::quoted(word);) words.push_back(word);
  return requestFor(words);
}

TEST(Verb, HelpIsWrittenForPeople) {
  EXPECT_EQ(
      verbHelp(),
      "  call METHOD [NAME=VALUE ...]\n"
      "      call a method of the service; NAME:int=VALUE or NAME:string=VALUE sets the type\n"
      "  get KEY\n"
      "      read a management value\n"
      "  set KEY VALUE\n"
      "      write a management value; `time` takes UTC or `local TIME`, in the years 1970-2037\n"
      "  reset\n"
      "      restore the device's default date and time formats\n"
      "  keys [KEY]\n"
      "      list the management keys and their values, or tell what one accepts\n"
      "  methods [METHOD]\n"
      "      list the methods of the service, or tell what one does and takes\n"
      "  events [EVENT]\n"
      "      list the events of the service, or tell when one is raised\n"
      "  watch [EVENT ...] [--where NAME=VALUE]... [--count N] [--for DURATION]\n"
      "      print the service's events as they arrive, or those with these names and values\n"
      "  wait EVENT ... [--where NAME=VALUE]... [--for DURATION]\n"
      "      wait for one of these events, and print it\n"
      "  wait-host [DURATION]\n"
      "      wait until the host answers, up to 30 s or that long\n"
      "  clock [ACTION]\n"
      "      show or control the clock\n"
      "      clock show                                show the clock's state, as `clock` alone "
      "does\n"
      "      clock speed X                             change the clock's speed\n"
      "      clock pause                               stop the clock; `clock speed 1` ends the "
      "pause\n"
      "      clock advance DURATION                    let time pass; each timer expires at its "
      "own instant\n"
      "      clock next                                let time pass up to the next timer\n"
      "      clock jump UTC|local TIME                 set the wall clock, but not uptime and "
      "timers\n"
      "      clock to hour|midnight|dst|leap-day|2038  go to ten seconds before the landmark, and "
      "pause\n"
      "  inject ACTION\n"
      "      simulate an event or a changed value of the device\n"
      "      inject jack PLUG STATUS      raise a plug event; `jack 5 1`: the network plug went "
      "in\n"
      "      inject network up|down       change the state of the network link\n"
      "      inject dhcp VALUE            change the device value dhcp-enabled\n"
      "      inject mobility VALUE        change the device value mobility-user-data-update\n"
      "      inject user-data KEY on|off  change whether KEY counts as the user's own, for "
      "`reset`\n"
      "      inject value KEY TEXT        change any device value\n"
      "  status [--watch]\n"
      "      show what the telephone shows and why, and the host's state\n"
      "  history [N]\n"
      "      list the last changes of the clock, zone and settings, or the last N of them\n"
      "  upcoming [N] [--until UTC] [--plot FILE]\n"
      "      list the next N events and at least the first of each kind, without moving the clock; "
      "--plot draws the local offset\n"
      "  log [--level N] [--follow]\n"
      "      show the application log, or its lines up to level N: 2 errors, 3 warnings, 4 notes, "
      "5 all\n"
      "  log-level [N]\n"
      "      show up to which level standard error or the log file has the log, or change it to "
      "N\n"
      "  security-log\n"
      "      list who changed or tried to change what; a power loss may lose the latest records\n"
      "  record FILE [--count N] [--for DURATION] [--overwrite]\n"
      "      write what is done to the telephone, and its events, as a scenario\n"
      "  monitor\n"
      "      print every frame between the host and its clients\n"
      "\n"
      "Words:\n"
      "  X is `0` (paused), `1`, `0.5`, `3600` or `max`: virtual seconds in each real second\n"
      "  DURATION is `90s`, `15m`, `1h30m`, `1d` or `00:30:00`, or exactly `2.5s`, up to a "
      "century\n"
      "  UTC is `2026-03-08T06:59:50Z` or `2026-03-08T06:59:50+00:00`, in the years 1970-2199\n"
      "  TIME is `2026-03-08 01:59:50`, in the years 1970-2199, in the telephone's zone\n"
      "  hour is the next full hour\n"
      "  midnight is the next local midnight\n"
      "  dst is the next change to or from daylight saving\n"
      "  leap-day is the next leap day\n"
      "  2038 is the end of 32-bit time, 2038-01-19T03:14:07Z\n");
}

TEST(Verb, WordsBecomeRequests) {
  const std::pair<const char*, const char*> accepted[] = {
      {"call getTime", R"({"verb":"call","method":"getTime","arguments":[]})"},
      {"call unknown a=1", R"({"verb":"call","method":"unknown","arguments":["a=1"]})"},
      {"call \"\"", R"({"verb":"call","method":"","arguments":[]})"},
      {"get time", R"({"verb":"get","key":"time"})"},
      {"get unknown", R"({"verb":"get","key":"unknown"})"},
      {"set sntp-tz-offset -5", R"({"verb":"set","key":"sntp-tz-offset","value":"-5"})"},
      {"set ntp-secret \"\"", R"({"verb":"set","key":"ntp-secret","value":""})"},
      {"set ntp-secret local", R"({"verb":"set","key":"ntp-secret","value":"local"})"},
      {"set time tomorrow", R"({"verb":"set","key":"time","value":"tomorrow"})"},
      {"set time 2026-03-08 01:59:50",
       R"({"verb":"set","key":"time","value":"2026-03-08 01:59:50"})"},
      {"set time local 2026-03-08 01:59:50",
       R"({"verb":"set","key":"time","local":"2026-03-08 01:59:50"})"},
      {"set time \"local 2026-03-08 01:59:50\"",
       R"({"verb":"set","key":"time","local":"2026-03-08 01:59:50"})"},
      {"reset", R"({"verb":"reset"})"},
      {"keys", R"({"verb":"keys"})"},
      {"keys time", R"({"verb":"keys","key":"time"})"},
      {"methods", R"({"verb":"methods"})"},
      {"methods getTime", R"({"verb":"methods","name":"getTime"})"},
      {"events dateChangeEvent", R"({"verb":"events","name":"dateChangeEvent"})"},
      {"watch", R"({"verb":"watch","events":[],"where":{},"count":0,"for":0})"},
      {"watch --count 3", R"({"verb":"watch","events":[],"where":{},"count":3,"for":0})"},
      {"clock", R"({"verb":"clock","action":"show"})"},
      {"clock show", R"({"verb":"clock","action":"show"})"},
      {"clock speed max", R"({"verb":"clock","action":"speed","speed":"max"})"},
      {"clock pause", R"({"verb":"clock","action":"pause"})"},
      {"clock advance 2h", R"({"verb":"clock","action":"advance","seconds":7200})"},
      {"clock next", R"({"verb":"clock","action":"next"})"},
      {"clock jump 1970-01-01T00:01:00Z", R"({"verb":"clock","action":"jump","seconds":60})"},
      {"clock jump local 2026-03-08 01:59:50",
       R"({"verb":"clock","action":"jump","local":"2026-03-08 01:59:50"})"},
      {"clock jump local \"2026-03-08 01:59:50\"",
       R"({"verb":"clock","action":"jump","local":"2026-03-08 01:59:50"})"},
      {"clock jump \"local 2026-03-08 01:59:50\"",
       R"({"verb":"clock","action":"jump","local":"2026-03-08 01:59:50"})"},
      {"clock to leap-day", R"({"verb":"clock","action":"to","landmark":"leap-day"})"},
      {"inject jack 5 1", R"({"verb":"inject","what":"jack","plug":5,"status":1})"},
      {"inject jack 2147483647 -2147483648",
       R"({"verb":"inject","what":"jack","plug":2147483647,"status":-2147483648})"},
      {"inject network up", R"({"verb":"inject","what":"network","value":"up"})"},
      {"inject dhcp 1", R"({"verb":"inject","what":"dhcp","value":"1"})"},
      {"inject mobility all", R"({"verb":"inject","what":"mobility","value":"all"})"},
      {"inject user-data date-format off",
       R"({"verb":"inject","what":"user-data","key":"date-format","value":"off"})"},
      {"inject value k \"a b\"", R"({"verb":"inject","what":"value","key":"k","value":"a b"})"},
      {"status", R"({"verb":"status","watch":false})"},
      {"status --watch", R"({"verb":"status","watch":true})"},
      {"history", R"({"verb":"history"})"},
      {"history 1000", R"({"verb":"history","count":1000})"},
      {"upcoming", R"({"verb":"upcoming"})"},
      {"upcoming --plot y.svg 5 --until 1970-01-01T00:01:00Z",
       R"({"verb":"upcoming","plot":"y.svg","count":5,"until":60})"},
      {"log", R"({"verb":"log","follow":false})"},
      {"log --follow", R"({"verb":"log","follow":true})"},
      {"log --follow --level 0", R"({"verb":"log","follow":true,"level":0})"},
      {"log --level 6", R"({"verb":"log","follow":false,"level":6})"},
      {"log-level", R"({"verb":"log-level"})"},
      {"log-level 0", R"({"verb":"log-level","level":0})"},
      {"security-log", R"({"verb":"security-log"})"},
      {"clock advance 2.5s", R"({"verb":"clock","action":"advance","microseconds":2500000})"},
      {"record a", R"({"verb":"record","file":"a","count":0,"for":0,"overwrite":false})"},
      {"record a --overwrite --for 2m --count 3",
       R"({"verb":"record","file":"a","count":3,"for":120000,"overwrite":true})"},
      {"record a --for 0.2s",
       R"({"verb":"record","file":"a","count":0,"for":200,"overwrite":false})"},
      {"monitor", R"({"verb":"monitor"})"},
  };
  for (const auto& [words, request] : accepted) EXPECT_EQ(requestFor(words), request) << words;
}

TEST(Verb, TakesTimeWhereVirtualTimePasses) {
  const std::pair<const char*, bool> rows[] = {{"clock advance 2h", true},
                                               {"clock to hour", true},
                                               {"clock next", false},
                                               {"clock jump 1970-01-01T00:01:00Z", false},
                                               {"get time", false}};
  for (const auto& [words, expected] : rows) {
    const Json request = Json::parse(requestFor(words));
    const Verb& verb = *findVerb(request.at("verb").get<std::string>());
    EXPECT_EQ(takesTime(verb, request), expected) << words;
  }
}

// Whether the error is one short line without control characters, which could disturb a terminal.
bool isShortLine(const std::string& error) {
  constexpr std::size_t kLongest = 400;  // bytes
  return error.size() <= kLongest && escapedLine(error) == error;
}

// Checks each word after `line`. A text may be anything but invalid UTF-8.
void expectOutsideWordsAreRefused(Words line, const VerbWords& expected) {
  for (const VerbWord& word : expected) {
    if (word.usage.empty()) return;
    const bool isText = word.read == readText || word.read == readOptionalText;
    Words outside = {"\xff"};
    if (!isText) outside.insert(outside.end(), {"", "a\nb", kHuge, std::string(100'000, 'x')});
    for (const std::string& text : outside) {
      line.push_back(text);
      const std::string error = requestFor(line);
      EXPECT_NE(error.front(), '{') << line[0] << ' ' << word.usage << ' ' << text.substr(0, 40);
      EXPECT_TRUE(isShortLine(error)) << error;
      EXPECT_TRUE(!isText || error.ends_with(" must be UTF-8 text")) << error;
      line.pop_back();
    }
    line.emplace_back("5");  // a key, a plug or a method
  }
}

TEST(Verb, EachWordOutsideItsRangeIsRefusedInOneShortLine) {
  constexpr VerbWord kAction{"ACTION", "", nullptr};
  for (const Verb& verb : kVerbs) {
    const Words line = {std::string(verb.name)};
    expectOutsideWordsAreRefused(line, verb.words);
    if (!verb.actions.empty()) expectOutsideWordsAreRefused(line, {kAction});
    for (const VerbAction& action : verb.actions)
      expectOutsideWordsAreRefused({line[0], std::string(action.name)}, action.words);
  }
  expectOutsideWordsAreRefused({}, {VerbWord{"VERB", "", nullptr}});
}

}  // namespace
}  // namespace host
