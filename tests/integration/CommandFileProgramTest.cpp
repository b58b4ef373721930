// clockctl -f: many commands over one connection.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "integration/RestartableHost.h"
#include "support/Becomes.h"

namespace integration {
namespace {

using nlohmann::json;

class CommandFile : public ::testing::Test {
 protected:
  Outcome run(const std::string& text, Words options = {}) {
    std::ofstream(m_file) << text;
    options.insert(options.end(), {"-f", m_file});
    return m_host.ctl(options);
  }

  RunningHost m_host;
  const std::string m_file = m_host.folder() / "commands";
};

TEST_F(CommandFile, PrintsWhatTheCommandsAlonePrint) {
  const Outcome outcome =
      run("set sntp-tz-offset -5  # New York\n"
          "clock advance 1s\n"
          "set time local 2026-03-08 01:59:50\n"
          "get time\n"
          "call setTimeInt setTime=1000000000\n"
          "call getTimeInts\n"
          "get date-format\n");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_TRUE(
      outcome.out.ends_with("2026-03-08T06:59:50+00:00\ngetTimeIntsHoursReturn=1\n"
                            "getTimeIntsMinutesReturn=59\ngetTimeIntsSecondsReturn=50\n0\n"))
      << outcome.out;
}

TEST_F(CommandFile, StopsAtARefusal) {
  const Outcome outcome = run("get date-format\nset daylight-save yes\nget time-format\n");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "0\n");
  EXPECT_EQ(outcome.err,
            m_file + ":2: \"daylight-save\" refused \"yes\"; it takes true or false\n");
}

TEST_F(CommandFile, UsesOneConnectionToEachSocket) {
  const auto monitor = m_host.startCtl({"--json", "monitor"});
  ASSERT_TRUE(support::becomesTrue(
      [&] { return monitor->out().find("\"begin\"") != monitor->out().npos; }));
  ASSERT_EQ(run("get time\ncall getTime\nget time\ncall getTime\nget date-format\n").status, 0);
  ASSERT_TRUE(support::becomesTrue(
      [&] { return monitor->out().find("date-format") != monitor->out().npos; }));
  monitor->signal(SIGTERM);
  std::set<std::string> peers;
  std::istringstream frames(monitor->wait().out);
  std::size_t calls = 0;
  for (std::string line; std::getline(frames, line);) {
    const json frame = json::parse(line);
    if (frame.value("kind", "") == "call") ++calls;
    if (frame.value("method", "") == "getTime" ||
        frame.value("json", json::object()).value("verb", "") == "get")
      peers.insert(frame.at("peer"));
  }
  EXPECT_EQ(calls, 2U);
  EXPECT_EQ(peers.size(), 2U);
}

// A pipe from which clockctl takes commands as they come.
class CommandPipe : public CommandFile {
 protected:
  CommandPipe() { EXPECT_EQ(::mkfifo(m_file.c_str(), 0600), 0); }

  // file: "-" for standard input, or the pipe's name.
  void start(const std::string& file) {
    const Words words = m_host.ctlWords({"-f", file});
    m_program = std::make_unique<Program>(m_host.folder(), "piped",
                                          file == "-" ? inShell("<" + m_file, words) : words);
    m_pipe.open(m_file);
  }

  void send(const std::string& line) { m_pipe << line << std::endl; }
  bool prints(const std::string& text) const {
    return support::becomesTrue([&] { return m_program->out() == text; });
  }

  std::unique_ptr<Program> m_program;
  std::ofstream m_pipe;
};

TEST_F(CommandPipe, IsCarriedOutLineByLine) {
  for (const std::string& file : {std::string("-"), m_file}) {
    start(file);
    send("get date-format");
    EXPECT_TRUE(prints("0\n")) << m_program->out();
    send("get time-format");
    EXPECT_TRUE(prints("0\n0\n")) << m_program->out();
    send("get nope");
    EXPECT_EQ(m_program->wait().status, 2);
    EXPECT_TRUE(m_program->err().starts_with(file + ":3: no key \"nope\"; ")) << m_program->err();
    m_pipe.close();
  }
}

// A registration that outlived its watch would keep the event between the two for the second.
TEST_F(CommandPipe, WatchesAnewEachTime) {
  start("-");
  for (const char* const hour : {"Hours=1 ", "Hours=3 "}) {
    const std::size_t said = m_program->err().size();
    send("watch --count 1");
    ASSERT_TRUE(m_program->says("ready\n", said));
    ASSERT_EQ(m_host.ctl({"clock", "advance", "1h"}).status, 0);
    const auto seen = [&] { return m_program->out().find(hour) != std::string::npos; };
    EXPECT_TRUE(support::becomesTrue(seen, std::chrono::seconds(5))) << m_program->out();
    ASSERT_EQ(m_host.ctl({"clock", "advance", "1h"}).status, 0);
  }
  m_pipe.close();
  EXPECT_EQ(m_program->wait().status, 0) << m_program->err();
}

}  // namespace
}  // namespace integration
