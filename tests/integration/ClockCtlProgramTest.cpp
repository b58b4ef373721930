// clockctl with a running host. What clockctl and the host do with each word and each answer is
// tested in process; here, that a request crosses the sockets and comes back.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>

#include "integration/OneLine.h"
#include "integration/RestartableHost.h"
#include "support/Becomes.h"

namespace integration {
namespace {

using nlohmann::json;

TEST(ClockCtlProgram, PrintsEachParameterOfAReply) {
  RunningHost host;
  EXPECT_EQ(host.ctl({"call", "getDateInts"}).out,
            "getDateIntsDayReturn=16\ngetDateIntsMonthReturn=6\ngetDateIntsYearReturn=2016\n");
  EXPECT_EQ(host.ctl({"call", "getUTCTimeTimeVal", "getUTCTimeTimeValTime=1"}).out,
            "getUTCTimeTimeValStringReturn=1970-01-01T00:00:01+00:00\n");
  EXPECT_EQ(host.ctl({"--json", "call", "getTime"}).out,
            "{\"method\":\"getTime\",\"reply\":{\"getTimeStringReturn\":\"00:00\"}}\n");
}

TEST(ClockCtlProgram, EndsAOneWayCallWhenTheServiceHasHandledIt) {
  RunningHost host;
  EXPECT_EQ(host.ctl({"call", "setTimeInt", "setTime=1000000000"}).status, 0);
  EXPECT_EQ(host.ctl({"call", "getTimeVal"}).out, "getTimeValReturn=1000000000\n");
}

// A stopped host still accepts connections, so no error shows that it did nothing.
TEST(ClockCtlProgram, DoesNotReportAOneWayCallToAStoppedHostAsDone) {
  RunningHost host;
  host.program().signal(SIGSTOP);
  expectOneLine(host.ctl({"--timeout", "0.05", "call", "setTimeInt", "setTime=60"}), 1,
                {"no reply within 0.05 s; the host is stopped; `kill -CONT " +
                 std::to_string(host.program().id()) + "` resumes it"});
  host.program().signal(SIGCONT);
  EXPECT_EQ(host.ctl({"call", "setTimeInt", "setTime=60"}).status, 0);
}

TEST(ClockCtlProgram, SaysOfAHostThatItWaitsForThatItIsStopped) {
  RunningHost host;
  host.program().signal(SIGSTOP);
  const std::string resume = "`kill -CONT " + std::to_string(host.program().id()) + "` resumes it";
  for (const Words& words :
       {Words{"wait-host", "0.05s"}, {"--wait-host", "0.05s", "get", "time"}}) {
    expectOneLine(host.ctl(words), 3,
                  {"no host answered within 0.05 s; the host is stopped; " + resume});
  }
  host.program().signal(SIGCONT);
  EXPECT_EQ(host.ctl({"wait-host"}).status, 0);
}

TEST(ClockCtlProgram, SendsAnythingOnPurpose) {
  RunningHost host;
  expectOneLine(host.ctl({"--raw", "--timeout", "0.2", "call", "get\nTme"}), 1,
                {"no method \"get\\nTme\"; did you mean \"getTime\"?"});
  EXPECT_EQ(host.ctl({"--raw", "call", "setTime", "hours=9"}).out, "setTimeReturn=false\n");
  expectOneLine(host.ctl({"--raw", "get", "tine"}), 1, {"no key \"tine\"; did you mean \"time\"?"});
  EXPECT_NE(host.ctl({"log"}).out.find("Invalid Message"), std::string::npos);
}

TEST(ClockCtlProgram, ReadsSetsAndResetsValues) {
  RunningHost host;
  EXPECT_EQ(host.ctl({"set", "date-format", "1"}).status, 0);
  EXPECT_EQ(host.ctl({"get", "date-format"}).out, "1\n");
  EXPECT_EQ(host.ctl({"set", "sntp-addr", "192.0.2.1"}).status, 0);
  EXPECT_EQ(json::parse(host.ctl({"keys", "--json"}).out).at("keys").at(0),
            (json{{"key", "time"},
                  {"value", "2016-06-16T00:00:00+00:00"},
                  {"settable", true},
                  {"state", 4}}));
  EXPECT_EQ(host.ctl({"reset"}).status, 0);
  EXPECT_EQ(host.ctl({"get", "date-format"}).out, "0\n");
  expectOneLine(host.ctl({"reset"}), 1, {"nothing was reset"});
}

// Without the first word, "clockctl".
Words wordsOf(const json& example) {
  std::istringstream text(example.get<std::string>());
  Words words{std::istream_iterator<std::string>(text), {}};
  words.erase(words.begin());
  return words;
}

TEST(ClockCtlProgram, AcceptsTheExampleOfEachMethod) {
  RunningHost host;
  const json methods = json::parse(host.ctl({"methods", "--json"}).out).at("methods");
  for (const json& method : methods) {
    Words words = wordsOf(method.at("example"));
    words.insert(words.begin(), "--json");
    const Outcome outcome = host.ctl(words);
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const json reply = json::parse(outcome.out).at("reply");
    EXPECT_EQ(reply.size(), method.at("reply").size()) << outcome.out;
    for (const json& parameter : method.at("reply")) {
      EXPECT_TRUE(reply.contains(parameter.at("name"))) << outcome.out;
    }
  }
}

TEST(ClockCtlProgram, AcceptsTheExampleOfEachKey) {
  RunningHost host;
  const json keys = json::parse(host.ctl({"keys", "--json"}).out).at("keys");
  EXPECT_EQ(keys.size(), 16U);
  for (const json& row : keys) {
    const std::string key = row.at("key");
    const Outcome told = host.ctl({"keys", key, "--json"});
    const Outcome outcome = host.ctl(wordsOf(json::parse(told.out).at("example")));
    EXPECT_EQ(outcome.status, 0) << key << ": " << outcome.err;
  }
}

TEST(ClockCtlProgram, ListsWhichProcessTriedWhatInTheSecurityLog) {
  RunningHost host;
  const auto setBy = [&](const Words& words, int status) {
    const auto setter = host.startCtl(words);
    const std::string id = std::to_string(setter->id());
    EXPECT_EQ(setter->wait().status, status);
    return "uid " + std::to_string(::getuid()) + ", pid " + id;
  };
  const std::string first = setBy({"set", "daylight-save", "yes"}, 1);
  const std::string second = setBy({"call", "setTimeInt", "setTime=1466035200"}, 0);
  EXPECT_EQ(host.ctl({"security-log"}).out,
            "1 2016-06-16T00:00:00Z refused  " + first +
                ": ClockSettings set data daylight-save(yes)\n"
                "2 2016-06-16T00:00:00Z accepted " +
                second +
                ": Remote call setTimeInt(1466035200)\n"
                "note         a power cut may lose the latest records; stopping the host "
                "does not\n");
  const json records = json::parse(host.ctl({"security-log", "--json"}).out).at("records");
  for (const auto& [member, number] :
       {std::pair{"facility", 4}, {"severity", 1}, {"eventClass", 5}, {"eventCode", 3}}) {
    EXPECT_EQ(records[0].at(member), number) << member;
  }
  EXPECT_EQ(records[0].at("failure"), true);
}

TEST(ClockCtlProgram, WatchesTheStartOfDaylightSaving) {
  RunningHost host({"--variant", "3"});
  EXPECT_EQ(host.ctl({"set", "sntp-tz-offset", "-5"}).status, 0);
  EXPECT_EQ(host.ctl({"clock", "jump", "2026-01-15T12:00:00Z"}).status, 0);
  const Outcome to = host.ctl({"clock", "to", "dst"});
  EXPECT_NE(to.out.find("2026-03-08T06:59:50Z"), std::string::npos) << to.out << to.err;
  const auto watch = host.startCtl({"watch", "--count", "1"});
  ASSERT_TRUE(watch->says("ready\n"));
  EXPECT_EQ(host.ctl({"clock", "advance", "10s"}).status, 0);
  const Outcome watched = watch->wait();
  EXPECT_EQ(watched.out,
            "timeChangeEvent timeChangeEventHours=3 timeChangeEventMinutes=0 "
            "timeChangeEventSeconds=0 utc=2026-03-08T07:00:00Z local=2026-03-08T03:00:00-04:00\n");
  EXPECT_EQ(watched.err, "ready\n");
  EXPECT_EQ(host.ctl({"call", "getTime"}).out, "getTimeStringReturn=03:00am\n");
}

TEST(ClockCtlProgram, ShowsInJsonThatAJumpMovesTheTimeAndNotTheTimers) {
  RunningHost host;
  const json before = json::parse(host.ctl({"clock", "--json"}).out);
  const json after = json::parse(host.ctl({"--json", "clock", "jump", "2030-05-05T05:05:05Z"}).out);
  EXPECT_EQ(after.at("utc"), "2030-05-05T05:05:05Z");
  EXPECT_EQ(after.at("next"), before.at("next"));
  EXPECT_EQ(after.at("uptime"), before.at("uptime"));
  const json next = json::parse(host.ctl({"--json", "clock", "next"}).out);
  EXPECT_EQ(next.at("uptime"), "01:00:00");
}

TEST(ClockCtlProgram, ChangesTheSpeedOfARunningHost) {
  RunningHost host;
  EXPECT_EQ(json::parse(host.ctl({"--json", "clock"}).out).at("speed"), "paused");
  EXPECT_EQ(host.ctl({"clock", "speed", "max"}).status, 0);
  ASSERT_TRUE(support::becomesTrue([&] {
    return json::parse(host.ctl({"--json", "clock"}).out).at("utc") >= "2017";
  }));
  EXPECT_EQ(host.ctl({"clock", "pause"}).status, 0);
  const std::string paused = host.ctl({"clock"}).out;
  EXPECT_EQ(host.ctl({"clock"}).out, paused);
}

TEST(ClockCtlProgram, TellsWhyTheServiceRefusedACall) {
  RunningHost host;
  const std::vector<std::string> setDate = {"call", "setDate", "setDateDay=1", "setDateMonth=1",
                                            "setDateYear=2040"};
  const Outcome refused = host.ctl(setDate);
  EXPECT_EQ(refused.out, "setDateReturn=false\n");
  EXPECT_EQ(refused.err, "setDate refused: Year falls outside UNIX/POSIX restriction: 2040\n");
  EXPECT_EQ(refused.status, 0);
  const Outcome done = host.ctl({"call", "setTimeInt", "setTime=1772949600"});
  EXPECT_EQ(done.out + done.err, "");
  EXPECT_EQ(host.ctl({"set", "sntp-addr", "127.0.0.1"}).err, "");
  const char* const reason = "SNTP configured (127.0.0.1) so time not updated";
  EXPECT_EQ(host.ctl({"call", "setTimeInt", "setTime=5"}).err,
            std::string("setTimeInt refused: ") + reason + '\n');
  const Outcome inJson = host.ctl({"--json", "call", "setTimeInt", "setTime=5"});
  EXPECT_EQ(json::parse(inJson.out).at("reason"), reason);
  EXPECT_EQ(inJson.err, "");
  EXPECT_EQ(host.ctl({"call", "cancelAlarmClock", "cancelAlarmClockAlarmId=1"}).err, "")
      << "the service said nothing; lines of earlier calls are not its reason";
}

TEST(ClockCtlProgram, TellsAValueThatReadsBackOtherwise) {
  RunningHost host;
  const Outcome cut = host.ctl({"set", "simple-time", "2:01"});
  EXPECT_EQ(cut.err, "note: simple-time is now \"02:01\"\n");
  EXPECT_EQ(cut.out, "");
  EXPECT_EQ(cut.status, 0);
  EXPECT_EQ(host.ctl({"--json", "set", "simple-time", "2:01"}).out,
            "{\"ok\":true,\"value\":\"02:01\"}\n");
  EXPECT_EQ(host.ctl({"set", "simple-time", "02:01"}).err, "");
}

TEST(ClockCtlProgram, HasNoNoteAboutALocalTimeThatWasSet) {
  RunningHost host;
  const Outcome set = host.ctl({"set", "time", "local", "2026-03-08 01:59:50"});
  EXPECT_EQ(set.err + set.out, "");
  EXPECT_EQ(host.ctl({"--json", "set", "time", "local", "2026-03-08 01:59:50"}).out,
            "{\"ok\":true,\"instant\":\"2026-03-08T01:59:50+00:00\"}\n");
}

TEST(ClockCtlProgram, FollowsTheLogUntilTheHostEnds) {
  RunningHost host({"--log-level", "5"});
  const auto follower = host.startCtl({"log", "--follow"});
  ASSERT_TRUE(support::becomesTrue([&] { return !follower->out().empty(); }));
  EXPECT_EQ(host.ctl({"get", "date-format"}).status, 0);
  EXPECT_EQ(host.end(SIGTERM).status, 0);
  const Outcome followed = follower->wait();
  EXPECT_NE(followed.out.find("getData date-format"), std::string::npos) << followed.out;
  EXPECT_EQ(followed.status, 1);
}

// Its reply waits for the end of the move.
TEST(ClockCtlProgram, GivesTheReasonForATimeout) {
  RunningHost host;
  expectOneLine(host.ctl({"--timeout", "0.01", "clock", "advance", "36500d"}), 1,
                {"no reply within 0.01 s; the clock stops where it is; `clockctl clock` shows"});
}

TEST(ClockCtlProgram, HasTheVersionOfAllPrograms) {
  RunningHost host;
  const std::string version =
      json::parse(host.ctl({"status", "--json"}).out).at("version").get<std::string>() + "\n";
  for (const char* const program : {CLOCKCTL, CLOCKHOST, NTPCLIENT}) {
    EXPECT_EQ(Program(host.folder(), "version", {program, "--version"}).wait().out, version);
  }
}

TEST(Output, ThatIsLostIsAnErrorInOneLine) {
  RunningHost host;
  for (const Words& words : {host.ctlWords({"keys"}), Words{CLOCKCTL, "--help"},
                             Words{CLOCKHOST, "--help"}, Words{NTPCLIENT, "--version"}}) {
    expectOneLine(Program(host.folder(), "full", inShell(">/dev/full", words)).wait(), 1,
                  {"cannot write everything to standard output: No space left on device"});
  }
  expectOneLine(
      Program(host.folder(), "full", inShell(">/dev/full", host.ctlWords({"--json", "keys"})))
          .wait(),
      1,
      {R"({"ok":false,"status":1,"error":"cannot write everything to standard output: No space )"
       R"(left on device"})"});
}

// As any program that prints until it is stopped.
TEST(Output, WithoutAnEndIsEndedByASignal) {
  RunningHost host;
  Words words = {"/bin/sh", "-c", R"(exec "$0" "$@" >&2)"};
  for (const std::string& word : host.ctlWords({"--json", "monitor"})) words.push_back(word);
  for (const int signal : {SIGINT, SIGTERM}) {
    Program monitor(host.folder(), "monitor", words);
    ASSERT_TRUE(monitor.says("begin"));
    monitor.signal(signal);
    EXPECT_EQ(monitor.wait().status, 128 + signal);
  }
}

TEST(Output, ForAReaderThatHasGoneIsNoError) {
  RunningHost host;
  const std::string fifo = host.folder() / "gone";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  Words script = {"/bin/sh", "-c", ": <\"$0\" & exec 3>\"$0\"; wait; \"$@\" >&3; echo $? >&2",
                  fifo};
  for (const std::string& word : host.ctlWords({"keys"})) script.push_back(word);
  const Outcome outcome = Program(host.folder(), "gone", script).wait();
  EXPECT_EQ(outcome.err, "0\n");
}

}  // namespace
}  // namespace integration
