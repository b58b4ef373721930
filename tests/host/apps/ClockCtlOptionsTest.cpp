#include "apps/ClockCtlOptions.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "scenario/ScenarioWords.h"
#include "verbs/UsageError.h"
#include "verbs/Verb.h"

namespace host {
namespace {

using Words = std::vector<std::string>;
using std::chrono::milliseconds;

std::optional<ClockCtlOptions> read(const std::string& line) {
  std::ostringstream out;
  return readClockCtlOptions(splitScenarioLine(line), "/default", out);
}

std::string whyNotRead(const std::string& line) {
  try {
    static_cast<void>(read(line));
  } catch (const UsageError& error) {
    return error.what();
  }
  return "";
}

TEST(ClockCtlOptions, HaveDefaults) {
  const auto options = read("get time");
  EXPECT_EQ(options->socket, "/default");
  EXPECT_EQ(options->controlSocket, "/default.control");
  EXPECT_FALSE(options->json);
  EXPECT_EQ(options->timeout, std::nullopt);
  EXPECT_EQ(options->waitHost, std::nullopt);
  EXPECT_EQ(options->verb, (Words{"get", "time"}));
}

TEST(ClockCtlOptions, MayComeBeforeOrAfterTheVerb) {
  for (const char* const line :
       {"--json --socket /s --timeout 0.5 get time", "get time --json --socket /s --timeout 0.5",
        "--socket=/s get --json time --timeout=0.5",
        "--json --socket /s --timeout 0.5s get time"}) {
    const auto options = read(line);
    EXPECT_EQ(options->socket, "/s") << line;
    EXPECT_TRUE(options->json) << line;
    EXPECT_EQ(options->timeout, milliseconds(500)) << line;
    EXPECT_EQ(options->verb, (Words{"get", "time"})) << line;
  }
}

TEST(ClockCtlOptions, TheControlSocketFollowsTheCallSocketUnlessGiven) {
  EXPECT_EQ(read("--socket /a get time")->controlSocket, "/a.control");
  for (const char* const line :
       {"--control-socket /c --socket /a get time", "get time --socket=/a --control-socket=/c"}) {
    EXPECT_EQ(read(line)->socket, "/a") << line;
    EXPECT_EQ(read(line)->controlSocket, "/c") << line;
  }
}

TEST(ClockCtlOptions, TakeCommandsFromAFileInPlaceOfAVerb) {
  for (const char* const line : {"-f x", "-f=x", "--file x", "--file=x"}) {
    EXPECT_EQ(read(line)->file, "x") << line;
  }
  EXPECT_EQ(read("-f - --keep-going")->file, "-");
  EXPECT_EQ(read("get time")->file, "");
  const std::pair<const char*, const char*> rows[] = {
      {"-f x get time", "-f takes the commands from \"x\"; leave out \"get\""},
      {"--keep-going get time", "--keep-going is for -f only"},
      {"-f",
       "--file: its value is missing; write --file FILE; `clockctl --help` lists the options"},
  };
  for (const auto& [line, error] : rows) {
    EXPECT_EQ(whyNotRead(line), error);
  }
}

TEST(ClockCtlOptions, APathIsNotEmpty) {
  std::ostringstream out;
  for (const Words& words : {Words{"--socket", "", "keys"}, Words{"--socket=", "keys"},
                             Words{"--control-socket", "", "keys"}}) {
    EXPECT_THROW(static_cast<void>(readClockCtlOptions(words, "/default", out)), UsageError);
  }
}

TEST(ClockCtlOptions, TheLastOfTwoCounts) {
  const auto options =
      read("--socket /a --timeout 1 get time --socket=/b --timeout 2 --json --json");
  EXPECT_EQ(options->socket, "/b");
  EXPECT_EQ(options->timeout, milliseconds(2000));
  EXPECT_TRUE(options->json);
}

TEST(ClockCtlOptions, TheHostIsWaitedForInRealTime) {
  EXPECT_EQ(read("--wait-host 0.5s keys")->waitHost, milliseconds(500));
  EXPECT_EQ(read("keys --wait-host=1m30s")->waitHost, std::chrono::seconds(90));
}

TEST(ClockCtlOptions, ArgumentsOfAVerbMayLookLikeOptions) {
  EXPECT_EQ(read("set sntp-tz-offset -5")->verb, (Words{"set", "sntp-tz-offset", "-5"}));
  EXPECT_EQ(read("watch --count 3")->verb, (Words{"watch", "--count", "3"}));
  EXPECT_EQ(read("--json -- set ntp-secret --json")->verb, (Words{"set", "ntp-secret", "--json"}));
}

TEST(ClockCtlOptions, WrongOptionsAreUsageErrors) {
  for (const char* const line :
       {"--jsno get time", "--socket", "--timeout 0 get time", "--timeout -1 get time",
        "--timeout x get time", "--timeout 86401 get time", "--timeout nan get time",
        "get time --timeout", "--timeout= get time", "--timeout '' get time",
        "--timeout 25h get time", "--json=false get time", "--wait-host keys", "--wait-host 5 keys",
        "--wait-host 0s keys", "--wait-host= keys", "keys --wait-host"}) {
    EXPECT_THROW(static_cast<void>(read(line)), UsageError) << line;
  }
}

TEST(ClockCtlOptions, HelpListsOptionsAndVerbs) {
  std::ostringstream out;
  EXPECT_EQ(readClockCtlOptions(Words{"--help"}, "/default", out), std::nullopt);
  for (const char* const part :
       {"Usage: clockctl [OPTIONS] VERB [ARGUMENTS]\n", "-h, --help ", "--version ",
        "\nExit status:\n  0  done; also a call that is answered with false", "\n  3  no host",
        "--socket FILE ", "(default: /default)\n", "--control-socket FILE ", "--json ",
        "--timeout SECONDS ", "--wait-host DURATION ", "60 for clock advance and to, else 5)\n",
        "\nVerbs:\n  call METHOD", "\n      clock to hour|midnight|dst|leap-day|2038  ",
        "\nWords:\n", "\n  UTC is "}) {
    EXPECT_NE(out.str().find(part), std::string::npos) << part << '\n' << out.str();
  }
  std::ostringstream byWord;
  EXPECT_EQ(readClockCtlOptions(Words{"help"}, "/default", byWord), std::nullopt);
  EXPECT_EQ(byWord.str(), out.str());
}

TEST(ClockCtlOptions, HelpForAVerbExplainsItsWordsAndNoOthers) {
  const std::string keys =
      "  keys [KEY]\n      list the management keys and their values, or tell what one accepts\n";
  for (const Words& words : {Words{"help", "keys"}, Words{"keys", "--help"}, Words{"keys", "-h"}}) {
    std::ostringstream out;
    EXPECT_EQ(readClockCtlOptions(words, "/default", out), std::nullopt);
    EXPECT_EQ(out.str(), keys);
  }
  std::ostringstream clock;
  EXPECT_EQ(readClockCtlOptions(Words{"help", "clock"}, "/default", clock), std::nullopt);
  for (const char* const part : {"  clock [ACTION]\n", "\nWords:\n  X is ", "\n  leap-day is "}) {
    EXPECT_NE(clock.str().find(part), std::string::npos) << clock.str();
  }
  EXPECT_EQ(clock.str().find("KEY"), std::string::npos);
}

TEST(ClockCtlOptions, HelpForProgramsIsJson) {
  std::ostringstream get;
  EXPECT_EQ(readClockCtlOptions(Words{"--json", "help", "get"}, "/default", get), std::nullopt);
  EXPECT_EQ(get.str(), R"({"verb":"get","usage":"get KEY","meaning":"read a management value"})"
                       "\n");
  std::ostringstream all;
  EXPECT_EQ(readClockCtlOptions(Words{"--json", "help"}, "/default", all), std::nullopt);
  const Json verbs = Json::parse(all.str()).at("verbs");
  EXPECT_EQ(verbs.size(), allVerbs().size());
  for (const Json& each : verbs) {
    if (each.at("verb") == "clock") {
      EXPECT_EQ(each.at("actions").at(1).at("usage"), "clock speed X");
    }
  }
}

TEST(ClockCtlOptions, HelpForAnUnknownVerbIsRefused) {
  try {
    static_cast<void>(read("help kyes"));
    FAIL();
  } catch (const UsageError& error) {
    EXPECT_STREQ(error.what(), "unknown verb \"kyes\"; did you mean \"keys\"?");
  }
}

TEST(ClockCtlOptions, VersionIsPrintedAlone) {
  for (const Words& words : {Words{"--version"}, Words{"status", "--version"}}) {
    std::ostringstream out;
    EXPECT_EQ(readClockCtlOptions(words, "/default", out), std::nullopt);
    EXPECT_TRUE(std::regex_match(out.str(), std::regex("[0-9]+\\.[0-9]+\\.[0-9]+\n"))) << out.str();
  }
}

}  // namespace
}  // namespace host
