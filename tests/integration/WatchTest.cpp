// `watch`, `wait` and the waits for a host, as a script uses them.
#include <gtest/gtest.h>

#include <csignal>
#include <nlohmann/json.hpp>

#include "integration/OneLine.h"
#include "integration/RestartableHost.h"
#include "support/Becomes.h"

namespace integration {
namespace {

using nlohmann::json;

// A telephone in New York, ten seconds before a full hour.
class Watched : public ::testing::Test {
 protected:
  Watched() {
    EXPECT_EQ(host.ctl({"set", "sntp-tz-offset", "-5"}).status, 0);
    EXPECT_EQ(host.ctl({"clock", "jump", "2026-01-15T12:30:00Z"}).status, 0);
    EXPECT_EQ(host.ctl({"clock", "to", "hour"}).status, 0);
  }
  // Starts it, and waits until it misses nothing.
  std::unique_ptr<Program> ready(const Words& words) {
    auto program = host.startCtl(words);
    EXPECT_TRUE(program->says("ready\n")) << program->err();
    return program;
  }

  RunningHost host;
};

TEST_F(Watched, MissesNoEventBesideClockNext) {
  for (int run = 0; run < 10; ++run) {
    const auto watch = ready({"watch", "timeChangeEvent", "--count", "1"});
    EXPECT_EQ(host.ctl({"clock", "next"}).status, 0);
    const Outcome watched = watch->wait();
    EXPECT_EQ(watched.status, 0) << run;
    EXPECT_NE(watched.out.find("timeChangeEvent timeChangeEventHours=" + std::to_string(8 + run)),
              std::string::npos)
        << run << watched.out;
    EXPECT_EQ(host.ctl({"clock", "to", "hour"}).status, 0);
  }
}

TEST_F(Watched, PrintsTheEventsWithTheseNamesAndValues) {
  const auto named = ready({"wait", "dateChangeEvent", "timezoneChangeEvent"});
  const auto valued = ready({"wait", "timeChangeEvent", "--where", "timeChangeEventHours=9",
                             "--where", "timeChangeEventMinutes=0"});
  EXPECT_EQ(host.ctl({"clock", "advance", "17h"}).status, 0);
  EXPECT_EQ(named->wait().out,
            "dateChangeEvent dateChangeEventDay=16 dateChangeEventMonth=1 dateChangeEventYear=2026 "
            "utc=2026-01-16T05:00:00Z local=2026-01-16T00:00:00-05:00\n");
  EXPECT_EQ(valued->wait().out,
            "timeChangeEvent timeChangeEventHours=9 timeChangeEventMinutes=0 "
            "timeChangeEventSeconds=0 utc=2026-01-15T14:00:00Z local=2026-01-15T09:00:00-05:00\n");
}

// The system time stays where it was.
TEST_F(Watched, ShowsTheTimeThatTheTelephoneShowsAfterASetByHand) {
  const auto watch = ready({"--json", "wait", "timeChangeEvent"});
  EXPECT_EQ(host.ctl({"set", "simple-time", "07:30"}).status, 0);
  EXPECT_EQ(host.ctl({"clock", "jump", "1970-01-01T00:00:00Z"}).status, 0);
  EXPECT_EQ(host.ctl({"clock", "advance", "1s"}).status, 0);
  const json event = json::parse(watch->wait().out);
  EXPECT_EQ(event.at("event"), "timeChangeEvent");
  EXPECT_EQ(event.at("parameters").at("timeChangeEventMinutes"), 30);
  EXPECT_EQ(event.at("utc"), "2026-01-15T12:30:00Z");
  EXPECT_EQ(event.at("utcSeconds"), 1'768'480'200);
  EXPECT_EQ(event.at("local"), "2026-01-15T07:30:00-05:00");
  EXPECT_EQ(event.at("localSeconds"), 1'768'462'200);
}

TEST_F(Watched, EndsInTime) {
  const Outcome none = host.ctl({"wait", "alarmClockEvent", "--for", "0.01s"});
  EXPECT_EQ(none.out, "");
  EXPECT_EQ(none.err, "ready\nclockctl: 0 of 1 events came within 0.01 s\n");
  EXPECT_EQ(none.status, 1);
  const Outcome alone = host.ctl({"watch", "--for", "0.01s"});
  EXPECT_EQ(alone.err, "ready\n");
  EXPECT_EQ(alone.status, 0);
}

TEST_F(Watched, HasALogThatIsFollowedForTheTimeout) {
  const Outcome followed = host.ctl({"log", "--follow", "--timeout", "0.01"});
  EXPECT_EQ(followed.status, 0) << followed.err;
  EXPECT_EQ(followed.err, "");
  host.program().signal(SIGSTOP);
  expectOneLine(host.ctl({"log", "--follow", "--timeout", "0.01"}), 1,
                {"no reply within 0.01 s; the host is stopped; `kill -CONT "});
  host.program().signal(SIGCONT);
}

TEST_F(Watched, HasAStatusThatIsWatchedForTheTimeout) {
  const Outcome watched = host.ctl({"--json", "status", "--watch", "--timeout", "1"});
  EXPECT_EQ(watched.status, 0) << watched.err;
  EXPECT_TRUE(watched.out.starts_with(R"({"ok":true,"shown":)")) << watched.out;
}

TEST_F(Watched, HasFramesWithTheTimeOfEventsOnceTheMonitorIsReady) {
  const auto monitor = ready({"monitor"});
  const auto watch = ready({"watch", "--count", "1"});
  EXPECT_EQ(host.ctl({"clock", "next"}).status, 0);
  EXPECT_EQ(watch->wait().status, 0);
  const std::string time = " utc=2026-01-15T13:00:00Z local=2026-01-15T08:00:00-05:00\n";
  EXPECT_TRUE(support::becomesTrue([&] { return monitor->out().find(time) != std::string::npos; }))
      << monitor->out();
  monitor->signal(SIGTERM);
  EXPECT_EQ(monitor->wait().err, "ready\n");
}

class StartingHost : public ::testing::Test, protected RestartableHost {};

TEST_F(StartingHost, IsWaitedForWithoutItsFolder) {
  const std::string socket = folder() / "later/socket";
  const Words begin = {"--socket", socket, "--wait-host", "30s"};
  const auto waiting = [&](const Words& words) {
    Words all = begin;
    all.insert(all.end(), words.begin(), words.end());
    return startCtl(all);
  };
  const auto call = waiting({"call", "getTime"});
  const auto get = waiting({"get", "date-format"});
  const auto watch = waiting({"watch", "--count", "1"});
  const auto wait = startCtl({"--json", "wait-host", "--socket", socket});
  launch(words({"--socket", socket}));
  EXPECT_EQ(call->wait().out, "getTimeStringReturn=00:00\n");
  EXPECT_EQ(get->wait().out, "0\n");
  EXPECT_EQ(wait->wait().out, "{\"ok\":true}\n");
  ASSERT_TRUE(watch->says("ready\n"));
  EXPECT_EQ(ctl({"--socket", socket, "clock", "advance", "1h"}).status, 0);
  EXPECT_EQ(watch->wait().status, 0);
}

// It accepts connections all the while.
TEST_F(StartingHost, IsWaitedForWhileItDoesNotAnswer) {
  start();
  program().signal(SIGSTOP);
  expectOneLine(ctl({"wait-host", "0.05s"}), 3,
                {"no host answered within 0.05 s; the host is stopped; `kill -CONT "});
  const auto wait = startCtl({"wait-host"});
  program().signal(SIGCONT);
  EXPECT_EQ(wait->wait().status, 0);
}

}  // namespace
}  // namespace integration
