#include "apps/CommandFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "apps/ClockCtl.h"
#include "base/Error.h"
#include "integration/Programs.h"
#include "support/TemporaryFolder.h"
#include "verbs/Json.h"
#include "verbs/UsageError.h"

namespace host {
namespace {

using integration::Outcome;
using integration::Words;

class CommandFiles : public ::testing::Test {
 protected:
  void write(const std::string& text) const { std::ofstream(path) << text; }

  Outcome run(const Words& options = {}) const {
    Words words = {"-f", path};
    words.insert(words.end(), options.begin(), options.end());
    std::ostringstream out;
    std::ostringstream err;
    const int status = runClockCtl(words, "/nowhere", out, err);
    return {status, out.str(), err.str()};
  }

  const support::TemporaryFolder folder;
  const std::string path = folder / "commands";
};

TEST_F(CommandFiles, HaveTheWordsOfAScenarioAndTheirPlace) {
  write("\xEF\xBB\xBFget time\n\n  # a comment\nset ntp-secret \"a b\"  # another\r\nkeys");
  CommandFile file(path);
  const std::pair<Words, const char*> rows[] = {
      {{"get", "time"}, ":1: "}, {{"set", "ntp-secret", "a b"}, ":4: "}, {{"keys"}, ":5: "}};
  for (const auto& [words, place] : rows) {
    ASSERT_TRUE(file.next());
    EXPECT_EQ(file.words(), words);
    EXPECT_EQ(file.place(), path + place);
  }
  EXPECT_FALSE(file.next());
  EXPECT_FALSE(file.next());
}

TEST_F(CommandFiles, ThatCannotBeReadAreRefused) {
  EXPECT_THROW(CommandFile{path}, Error);
  EXPECT_THROW(CommandFile{folder.path()}, Error);
  const Outcome outcome = run();
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "clockctl: " + path +
                             " cannot be read; name a file of commands, or - for standard input\n");
}

TEST_F(CommandFiles, WithALineWithoutEndFillNoMemory) {
  CommandFile file("/dev/zero");
  EXPECT_THROW(static_cast<void>(file.next()), UsageError);
  EXPECT_EQ(file.place(), "/dev/zero:1: ");
  EXPECT_FALSE(file.next());
}

TEST_F(CommandFiles, StopAtTheFirstFailure) {
  write("methods getTime\nmethods getTme\nmethods getDate\n");
  const Outcome outcome = run();
  EXPECT_EQ(outcome.status, 2);
  EXPECT_TRUE(outcome.out.starts_with("method       getTime\n")) << outcome.out;
  EXPECT_EQ(outcome.out.find("getDate"), std::string::npos) << outcome.out;
  EXPECT_EQ(outcome.err, path + ":2: no method \"getTme\"; did you mean \"getTime\"?\n");
}

TEST_F(CommandFiles, HaveTheHelpOfTheCommandLine) {
  for (const Words& words : {Words{"help"}, Words{"help", "get"}, Words{"--json", "help", "get"}}) {
    std::ostringstream help;
    EXPECT_EQ(runClockCtl(words, "/nowhere", help, help), 0);
    const bool json = words.front() == "--json";
    write(json || words.size() > 1 ? "help get" : "help");
    const Outcome outcome = run(json ? Words{"--json"} : Words{});
    EXPECT_EQ(outcome.out, help.str());
    EXPECT_EQ(outcome.status, 0) << outcome.err;
  }
  write("help get set");
  EXPECT_EQ(run().err, path + ":1: \"set\" is one word too many (usage: help [VERB])\n");
}

TEST_F(CommandFiles, GoOnIfTheyAreToldTo) {
  write("get time\nevents x\nset a \"b\nevents alarmClockEvent\n");
  const Outcome outcome = run({"--keep-going"});
  EXPECT_EQ(outcome.status, 3) << "that of the first failure";
  EXPECT_TRUE(outcome.out.starts_with("event        alarmClockEvent\n")) << outcome.out;
  for (const char* const line :
       {":1: no host at /nowhere.control", ":2: no event \"x\"", ":3: a quote is not closed"}) {
    EXPECT_NE(outcome.err.find(path + line), std::string::npos) << outcome.err;
  }
}

TEST_F(CommandFiles, HaveAnswersAndErrorsInJson) {
  write("events alarmClockEvent\nexpect event alarmClockEvent\n");
  const Outcome outcome = run({"--json"});
  EXPECT_EQ(Json::parse(outcome.out).at("event"), "alarmClockEvent");
  EXPECT_EQ(
      Json::parse(outcome.err),
      (Json{{"ok", false},
            {"status", 2},
            {"error", path + ":2: unknown verb \"expect\"; `clockctl --help` lists the verbs"}}));
}

TEST_F(CommandFiles, RefuseCommandsThatDoNotEnd) {
  const std::pair<const char*, const char*> rows[] = {
      {"watch", "watch would not end here; write --count or --for"},
      {"record x", "record would not end here; write --count or --for"},
      {"monitor", "monitor would not end here; `clockctl --timeout SECONDS` ends it"},
      {"log --follow", "log would not end here; `clockctl --timeout SECONDS` ends it"},
      {"status --watch", "status would not end here; `clockctl --timeout SECONDS` ends it"},
  };
  for (const auto& [line, error] : rows) {
    write(line);
    EXPECT_EQ(run().err, path + ":1: " + error + '\n');
    EXPECT_EQ(run().status, 2) << line;
  }
  for (const char* const line : {"watch --count 1", "record x --for 1s", "log", "status"}) {
    write(line);
    EXPECT_EQ(run().status, 3) << line;
  }
  for (const char* const line : {"log --follow", "status --watch"}) {
    write(line);
    EXPECT_EQ(run({"--timeout", "1"}).status, 3) << line;
  }
}

}  // namespace
}  // namespace host
