#include "apps/ClockCtlOptions.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "apps/ClockCtl.h"
#include "remote/SocketFile.h"
#include "scenario/ScenarioWords.h"
#include "support/TemporaryFolder.h"
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

TEST(ClockCtlOptions, DefaultsAreThoseOfTheCaller) {
  const auto options = read("get time");
  EXPECT_EQ(options->socket, "/default");
  EXPECT_EQ(options->controlSocket, "/default.control");
  EXPECT_FALSE(options->json);
  EXPECT_EQ(options->timeout, std::nullopt);
  EXPECT_EQ(options->verb, (Words{"get", "time"}));
}

TEST(ClockCtlOptions, StandBeforeTheVerbOrAfterIt) {
  for (const char* const line :
       {"--json --socket /s --timeout 0.5 get time", "get time --json --socket /s --timeout 0.5",
        "--socket=/s get --json time --timeout=0.5"}) {
    const auto options = read(line);
    EXPECT_EQ(options->socket, "/s") << line;
    EXPECT_TRUE(options->json) << line;
    EXPECT_EQ(options->timeout, milliseconds(500)) << line;
    EXPECT_EQ(options->verb, (Words{"get", "time"})) << line;
  }
}

TEST(ClockCtlOptions, TheControlSocketIsBesideTheOtherUnlessItIsNamed) {
  EXPECT_EQ(read("--socket /a get time")->controlSocket, "/a.control");
  for (const char* const line :
       {"--control-socket /c --socket /a get time", "get time --socket=/a --control-socket=/c"}) {
    EXPECT_EQ(read(line)->socket, "/a") << line;
    EXPECT_EQ(read(line)->controlSocket, "/c") << line;
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

TEST(ClockCtlOptions, AVerbsWordsMayLookLikeOptions) {
  EXPECT_EQ(read("set sntp-tz-offset -5")->verb, (Words{"set", "sntp-tz-offset", "-5"}));
  EXPECT_EQ(read("watch --count 3")->verb, (Words{"watch", "--count", "3"}));
  EXPECT_EQ(read("--json -- set ntp-secret --json")->verb, (Words{"set", "ntp-secret", "--json"}));
}

TEST(ClockCtlOptions, WrongOnesAreUsageErrors) {
  for (const char* const line :
       {"--jsno get time", "--socket", "--timeout 0 get time", "--timeout -1 get time",
        "--timeout x get time", "--timeout 86401 get time", "--timeout nan get time",
        "get time --timeout"}) {
    EXPECT_THROW(static_cast<void>(read(line)), UsageError) << line;
  }
}

TEST(ClockCtlOptions, HelpListsEveryVerb) {
  std::ostringstream out;
  EXPECT_EQ(readClockCtlOptions(Words{"--help"}, "/default", out), std::nullopt);
  EXPECT_NE(out.str().find("to hour|midnight|dst|leap-day|2038"), std::string::npos);
  EXPECT_NE(out.str().find("--timeout"), std::string::npos);
}

TEST(ClockCtlOptions, HelpNamesEachOptionWithItsDefault) {
  std::ostringstream out;
  EXPECT_EQ(readClockCtlOptions(Words{"--help"}, "/default", out), std::nullopt);
  for (const char* const option :
       {"-h,--help ", "--version ", "--socket FILE=/default ", "--control-socket FILE ", "--json ",
        "--timeout SECONDS ", "(calls 2, others 5, where time passes 60)\n"}) {
    EXPECT_NE(out.str().find(option), std::string::npos) << option << '\n' << out.str();
  }
}

TEST(ClockCtlOptions, TheWordHelpIsTheOption) {
  std::ostringstream byWord;
  std::ostringstream byOption;
  EXPECT_EQ(readClockCtlOptions(Words{"help"}, "/default", byWord), std::nullopt);
  EXPECT_EQ(readClockCtlOptions(Words{"--help"}, "/default", byOption), std::nullopt);
  EXPECT_EQ(byWord.str(), byOption.str());
  EXPECT_TRUE(read("help me")) << "no such verb, as the table says";
}

TEST(ClockCtlOptions, VersionIsPrintedAlone) {
  for (const Words& words : {Words{"--version"}, Words{"status", "--version"}}) {
    std::ostringstream out;
    EXPECT_EQ(readClockCtlOptions(words, "/default", out), std::nullopt);
    EXPECT_TRUE(std::regex_match(out.str(), std::regex("[0-9]+\\.[0-9]+\\.[0-9]+\n"))) << out.str();
  }
}

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

Outcome run(const Words& words, const std::filesystem::path& socket) {
  std::ostringstream out;
  std::ostringstream err;
  const int status = runClockCtl(words, socket, out, err);
  return {status, out.str(), err.str()};
}

Outcome run(const std::string& line, const std::filesystem::path& socket) {
  return run(splitScenarioLine(line), socket);
}

bool isOneShortLine(const std::string& text) {
  constexpr std::size_t kLongest = 1200;  // bytes
  return text.starts_with("clockctl: ") && text.size() <= kLongest && text.ends_with('\n') &&
         std::all_of(text.begin(), text.end() - 1,
                     [](char byte) { return byte >= ' ' && byte != '\x7F'; });
}

// Any request of the operator may wait two seconds for a name server.
TEST(ClockCtl, WaitsForWhatTakesItsTime) {
  const std::pair<const char*, int> rows[] = {{"call getTime", 2},
                                              {"watch", 2},
                                              {"set sntp-addr time.example.org", 5},
                                              {"get time", 5},
                                              {"inject dhcp 1", 5},
                                              {"clock", 5},
                                              {"clock next", 5},
                                              {"clock advance 1d", 60},
                                              {"clock to dst", 60},
                                              {"clock jump 2026-03-08T06:59:50Z", 5}};
  for (const auto& [line, seconds] : rows)
    EXPECT_EQ(replyLimit(requestOf(splitScenarioLine(line))), std::chrono::seconds(seconds))
        << line;
}

TEST(ClockCtl, WrongUsageIsStatusTwoWithOneShortLine) {
  const std::string length(100'000, 'x');
  const std::pair<Words, const char*> rows[] = {
      {{}, "a verb is missing"},
      {{"gett", "time"}, "did you mean \"get\"?"},
      {{"clock", "advance", "3", "parsecs"}, "is not a duration"},
      {{"--jsno"}, "--jsno"},
      {{"get"}, "KEY is missing"},
      {{"x\ny"}, "unknown verb \"x\\ny\"; `clockctl --help` lists the verbs"},
      {{"clock", "spe\ned"}, "\"spe\\ned\" is not show"},
      {{"clock", "jump", "a\nb"}, "\"a\\nb\" is not an instant"},
      {{"call", "getTime", "a\nb"}, "\"a\\nb\" is not an argument"},
      {{"inject", "jack", "\n", "1"}, "\"\\n\" is not a number"},
      {{"--wro\nng"}, "--wro\\nng"},
      {{"--timeout", "1\n2", "keys"}, "1\\n2"},
      {{length}, "...\" (100000 bytes)"},
      {{"clock", "advance", length}, "...\" (100000 bytes) is not a duration; write `90s`"},
      {{"--" + length}, "; `clockctl --help` lists"},
      {{"--timeout=" + length, "status"}, "; `clockctl --help` lists"},
      {{"get", "\xff"}, "KEY must be UTF-8 text"},
      {{"set", "\xff", "1"}, "KEY must be UTF-8 text"},
      {{"set", "ntp-secret", "caf\xe9"}, "VALUE must be UTF-8 text"},
      {{"call", "\xc3"}, "METHOD must be UTF-8 text"},
      {{"call", "getTime", "a=\xff"}, "NAME=VALUE must be UTF-8 text"},
      {{"inject", "dhcp", "\xff"}, "VALUE must be UTF-8 text"},
      {{"inject", "value", "\xff", "1"}, "KEY must be UTF-8 text"},
      {{"inject", "value", "k", "\xff"}, "TEXT must be UTF-8 text"},
      {{"\xff"}, "unknown verb \"\\xFF\"; `clockctl --help` lists the verbs"},
      {{"inject", "network", "\xff"}, "\"\\xFF\" is not up or down"},
      {{"clock", "speed", "\xff"}, "\"\\xFF\" is not a speed"},
      {{"log", "\xff"}, "\"\\xFF\" is one word too many"},
  };
  for (const auto& [words, part] : rows) {
    const Outcome outcome = run(words, "/nowhere");
    EXPECT_EQ(outcome.status, 2) << outcome.err;
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(isOneShortLine(outcome.err)) << testing::PrintToString(outcome.err);
    EXPECT_NE(outcome.err.find(part), std::string::npos) << outcome.err;
  }
}

TEST(ClockCtl, NoHostIsStatusThreeAndNamesTheSocket) {
  const support::TemporaryFolder folder;
  const std::string socket = folder / "socket";
  for (const auto& [line, named] : {std::pair<const char*, std::string>("get time", ".control"),
                                    {"clock", ".control"},
                                    {"call getTime", ""},
                                    {"watch", ""}}) {
    const Outcome outcome = run(line, socket);
    EXPECT_EQ(outcome.status, 3) << line;
    EXPECT_TRUE(isOneShortLine(outcome.err)) << outcome.err;
    EXPECT_TRUE(outcome.err.starts_with("clockctl: no host at " + socket + named + ": "))
        << outcome.err;
  }
}

// Root is let in everywhere; while this lives, such a test is nobody.
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

TEST_F(SocketsOfAnotherUser, AreToldToBeSoWithStatusOne) {
  const std::string alone =
      "clockctl: the host's control socket " + control() + " is its owner's alone";
  for (const bool mayCall : {true, false}) {
    allowCalls(mayCall);
    const Outcome outcome = runAsAnother("keys");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, alone + (mayCall ? "; call and watch work for you\n" : "\n"));
  }
  for (const char* const line : {"call getTime", "watch"}) {
    const Outcome outcome = runAsAnother(line);
    EXPECT_EQ(outcome.status, 1) << line;
    EXPECT_EQ(outcome.err, "clockctl: no permission for the host's socket " + calls() +
                               "; its owner can open it with --socket-group\n");
  }
}

TEST(ClockCtl, HelpIsStatusZero) {
  const Outcome outcome = run("--help", "/nowhere");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
}

}  // namespace
}  // namespace host
