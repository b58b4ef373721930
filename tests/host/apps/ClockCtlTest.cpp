#include "apps/ClockCtl.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "apps/Command.h"
#include "integration/OneLine.h"
#include "remote/SocketFile.h"
#include "scenario/ScenarioWords.h"
#include "support/TemporaryFolder.h"
#include "verbs/Json.h"
#include "verbs/Verb.h"

namespace host {
namespace {

using integration::expectOneLine;
using integration::Outcome;
using integration::Words;

Outcome run(const Words& words, const std::filesystem::path& socket) {
  std::ostringstream out;
  std::ostringstream err;
  const int status = runClockCtl(words, socket, out, err);
  return {status, out.str(), err.str()};
}

Outcome run(const std::string& line, const std::filesystem::path& socket) {
  return run(splitScenarioLine(line), socket);
}

// Besides calls, any request may wait two seconds for a name server.
TEST(ClockCtl, WaitsLongerForRequestsThatTakeLonger) {
  const std::pair<const char*, int> rows[] = {
      {"call getTime", 2},
      {"watch", 2},
      {"wait dateChangeEvent", 2},
      {"get time", 5},
      {"set sntp-addr time.example.org", 5},
      {"inject dhcp 1", 5},
      {"clock", 5},
      {"clock next", 5},
      {"clock jump 2026-03-08T06:59:50Z", 5},
      {"clock advance 1d", 60},
      {"clock to dst", 60},
  };
  for (const auto& [line, seconds] : rows) {
    const Words words = splitScenarioLine(line);
    const Verb& verb = verbOf(words);
    EXPECT_EQ(replyLimit(verb, requestOf(verb, words)), std::chrono::seconds(seconds)) << line;
  }
}

// Other wrong command lines are in bad-inputs.txt.
TEST(ClockCtl, WordsOfAnyLengthAndBytesAreRefusedInOneShortLine) {
  const std::string length(100'000, 'x');
  const std::pair<Words, const char*> rows[] = {
      {{}, "a verb is missing"},
      {{length}, "...\" (100000 bytes)"},
      {{"clock", "advance", length}, "...\" (100000 bytes) is not a duration; write `90s`"},
      {{"--" + length}, "; `clockctl --help` lists"},
      {{"--timeout=" + length, "status"}, "; `clockctl --help` lists"},
      {{"get", "\xff"}, "KEY must be UTF-8 text"},
      {{"\xff"}, "unknown verb \"\\xFF\"; `clockctl --help` lists the verbs"},
  };
  for (const auto& [words, part] : rows)
    expectOneLine(run(words, "/nowhere"), 2, {"clockctl: ", part});
}

TEST(ClockCtl, ErrorsAreJsonWhereAnswersAre) {
  const std::pair<Words, const char*> rows[] = {
      {{"--json", "get"}, R"j({"ok":false,"status":2,"error":"KEY is missing (usage: get KEY)"})j"},
      {{"stats", "--json"},
       R"({"ok":false,"status":2,"error":"unknown verb \"stats\"; did you mean \"status\"?"})"},
      {{"--json", "keys", "--socket", "/nowhere"},
       R"({"ok":false,"status":3,"error":"no host at /nowhere.control: )"
       R"(No such file or directory"})"},
  };
  for (const auto& [words, line] : rows) {
    EXPECT_EQ(run(words, "/nowhere").err, line + std::string("\n"));
  }
  expectOneLine(run({"--", "stats", "--json"}, "/nowhere"), 2, {"clockctl: unknown verb"});
}

TEST(ClockCtl, NoHostIsStatusThreeAndNamesTheSocket) {
  const support::TemporaryFolder folder;
  const std::string socket = folder / "socket";
  for (const auto& [line, named] : {std::pair<const char*, std::string>("get time", ".control"),
                                    {"clock", ".control"},
                                    {"call getTime", ""},
                                    {"watch", ""},
                                    {"wait timeChangeEvent", ""}}) {
    expectOneLine(run(line, socket), 3, {"clockctl: no host at " + socket + named + ": "});
  }
}

// Root may connect to any socket: during its lifetime, a test of root runs as user nobody.
class NotRoot {
 public:
  NotRoot() { EXPECT_EQ(m_user != 0 ? 0 : ::seteuid(kNobody), 0); }
  ~NotRoot() { EXPECT_EQ(::seteuid(m_user), 0); }
  NotRoot(const NotRoot&) = delete;
  NotRoot& operator=(const NotRoot&) = delete;

 private:
  static constexpr uid_t kNobody = 65534;
  const uid_t m_user = ::geteuid();
};

class SocketsOfAnotherUser : public ::testing::Test {
 protected:
  SocketsOfAnotherUser() {
    EXPECT_EQ(::chmod(m_folder.path().c_str(), 0711), 0);
    EXPECT_EQ(::chmod(control().c_str(), 0), 0);
  }
  void allowCalls(bool allowed) { EXPECT_EQ(::chmod(calls().c_str(), allowed ? 0666 : 0), 0); }
  [[nodiscard]] std::string calls() const { return m_folder / "socket"; }
  [[nodiscard]] std::string control() const { return calls() + ".control"; }
  Outcome runAsAnother(const std::string& line) {
    const NotRoot notRoot;
    return run(line, calls());
  }

  support::TemporaryFolder m_folder;
  const SocketFile m_calls{calls()};
  const SocketFile m_control{control()};
};

TEST_F(SocketsOfAnotherUser, AreRefusedWithStatusOneAndWhatToDo) {
  const std::string alone =
      "clockctl: the host's control socket " + control() + " is for its owner only";
  for (const bool mayCall : {true, false}) {
    allowCalls(mayCall);
    const Outcome outcome = runAsAnother("keys");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, alone + (mayCall ? "; you may use call, watch and wait\n" : "\n"));
  }
  for (const char* const line : {"call getTime", "watch", "wait timeChangeEvent", "wait-host"}) {
    const Outcome outcome = runAsAnother(line);
    EXPECT_EQ(outcome.status, 1) << line;
    EXPECT_EQ(outcome.err, "clockctl: no permission for the host's socket " + calls() +
                               "; its owner can open it with --socket-group\n");
  }
}

TEST(ClockCtl, SendsAnythingOnPurpose) {
  for (const char* const line : {"call x", "call setTimeInt x=1", "call setTimeInt", "get x",
                                 "set time noon", "keys x", "inject value x y"}) {
    EXPECT_EQ(run(line, "/nowhere").status, 2) << line;
    EXPECT_EQ(run("--raw " + std::string(line), "/nowhere").status, 3) << line;
  }
}

TEST(ClockCtl, TellsMethodsAndEventsWithoutAHost) {
  const Outcome method = run("methods setTimeInt", "/nowhere");
  EXPECT_EQ(method.status, 0) << method.err;
  EXPECT_TRUE(method.out.starts_with("method       setTimeInt\n")) << method.out;
  EXPECT_EQ(Json::parse(run("--json events", "/nowhere").out).at("events").size(), 4U);
  expectOneLine(run("methods getTme", "/nowhere"), 2, {"did you mean \"getTime\"?"});
  expectOneLine(run("methods x", "/nowhere"), 2,
                {"no method \"x\"; `clockctl methods` lists them"});
  expectOneLine(run("events x", "/nowhere"), 2,
                {"no event \"x\"; there are timezoneChangeEvent, timeChangeEvent, dateChangeEvent, "
                 "alarmClockEvent"});
}

TEST(ClockCtl, HelpIsStatusZero) {
  const Outcome outcome = run("--help", "/nowhere");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
}

}  // namespace
}  // namespace host
