// clockhost --scenario FILE: its exit status and what it writes.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "integration/OneLine.h"
#include "support/Becomes.h"
#include "support/FileContent.h"
#include "support/TemporaryFolder.h"

namespace integration {
namespace {

// Whether the folder holds that of the telephones. The thread sanitizer has a file there for a
// moment.
bool hasTelephones(const std::filesystem::path& folder) {
  const std::filesystem::directory_iterator entries(folder);
  return std::any_of(begin(entries), end(entries), [](const auto& entry) {
    return entry.path().filename().string().starts_with("clock-scenarios-");
  });
}

class Scenario : public ::testing::Test {
 protected:
  Outcome run(const std::string& text, const Words& command = {}) {
    write("x", text);
    return runHost({"--scenario", m_file}, command);
  }

  Outcome runHost(const Words& options, Words command = {}) {
    const Words host = {CLOCKHOST, "--plugin", CLOCK_PLUGIN};
    command.insert(command.end(), host.begin(), host.end());
    command.insert(command.end(), options.begin(), options.end());
    return Program(m_folder.path(), "clockhost", command).wait();
  }

  // The file NAME.scenario in the folder.
  std::string write(const std::string& name, const std::string& text) const {
    const std::filesystem::path file = m_folder / (name + ".scenario");
    std::ofstream(file) << text;
    return file.string();
  }

  const support::TemporaryFolder m_folder;
  const std::string m_file = m_folder / "x.scenario";
};

TEST_F(Scenario, PassesInSilence) {
  const Outcome outcome =
      run("variant 3\n"
          "set sntp-tz-offset -5\n"
          "clock jump 2026-03-08T06:59:50Z\n"
          "clock advance 10s\n"
          "expect call getTime getTimeStringReturn=03:00am\n"
          "expect event timeChangeEvent timeChangeEventHours=3\n");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out + outcome.err, "");
}

TEST_F(Scenario, FailsWithItsLineAndWhatCameInstead) {
  const Outcome outcome = run("\nexpect get date-format 2");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, m_file +
                             ":2: expected date-format \"2\", got \"0\"\n"
                             "  time: 2016-06-16T00:00:00Z, local 2016-06-16 00:00:00 "
                             "(LOC, UTC+00:00)\n");
}

TEST_F(Scenario, DoesNotRunWhenALineIsWrong) {
  expectOneLine(run("expect get date-format 2\nclock advance 3 parsecs\n"), 2,
                {m_file + ":2: clock advance: \"3 parsecs\" is not a duration"});
}

TEST_F(Scenario, NeedsATemporaryFolder) {
  const Words command = {"/usr/bin/env", "TMPDIR=" + (m_folder / "none").string()};
  expectOneLine(run("clock show\n", command), 1,
                {m_file + ": there is no temporary folder; set TMPDIR to one"});
}

TEST_F(Scenario, LeavesAReportAndNothingElseWhenItIsStopped) {
  const std::filesystem::path temporary = m_folder / "temporary";
  std::filesystem::create_directory(temporary);
  const std::string file = write("long", "clock advance 36500d\n");
  const std::string report = m_folder / "report.xml";
  for (const int signal : {SIGINT, SIGTERM}) {
    Program program(m_folder.path(), "stopped",
                    {"/usr/bin/env", "TMPDIR=" + temporary.string(), CLOCKHOST, "--plugin",
                     CLOCK_PLUGIN, "--scenario", file, "--junit", report});
    ASSERT_TRUE(support::becomesTrue([&] { return hasTelephones(temporary); }));
    program.signal(signal);
    EXPECT_EQ(program.wait().status, 128 + signal);
    EXPECT_TRUE(std::filesystem::is_empty(temporary));
    EXPECT_NE(support::contentOf(report).find("<skipped/></testcase>"), std::string::npos);
  }
}

TEST_F(Scenario, SaysInOneLineWhyItDoesNotRun) {
  write("wrong", "clock advance 3 parsecs\n");
  const std::string right = write("right", "clock show\n");
  const std::string none = m_folder / "none";
  const struct {
    Words options;
    int status;
    std::string part;
  } rows[] = {
      {{"--scenario", m_folder / "no\nfile"}, 2, "no\\nfile: cannot be read"},
      {{"--scenario", m_folder / "host.d"}, 2, "host.d: has no file *.scenario; name a file, or"},
      // The first cannot be read, the second has no end.
      {{"--scenario", "/proc/self/mem"}, 2, "cannot be read"},
      {{"--scenario", "/dev/zero"}, 2, "is too large; a scenario has at most 16 MiB"},
      {{"--scenario", right, m_folder / "wrong.scenario"}, 2, "wrong.scenario:1: clock advance"},
      {{"--scenario", m_folder.path(), "--jobs", "0"},
       2,
       "\"0\" is not a whole number from 1 to 256"},
      {{"--scenario", right, "--variant", "3"}, 2, "--variant is not for scenarios; write"},
      {{"--scenario", right, "--state", "s"}, 2, "--state is not for scenarios; leave it out"},
      {{"--scenario", right, ""}, 2, "the path is empty"},
      {{"--scenario", write("includes", "include none\n")}, 2, "/none: cannot be read"},
      {{"--scenario", write("circle", "include circle.scenario\n")}, 2, "includes itself"},
      {{"--keep-going"}, 2, "--keep-going is for --scenario only"},
      {{"--scenario", right, "--junit", none + "/j"}, 1, "/j\" cannot be written; name a file"},
      {{"--scenario", right, "--plugin", none}, 1, none},
  };
  std::filesystem::create_directory(m_folder / "host.d");
  for (const auto& [options, status, part] : rows) expectOneLine(runHost(options), status, {part});
}

TEST_F(Scenario, IncludesFilesBesideIt) {
  std::ofstream(m_folder / "zone.inc") << "\nexpect tz x\n";
  const Outcome outcome = run("clock show\ninclude zone.inc\n");
  EXPECT_EQ(outcome.status, 1);
  const std::string place = m_file + ":2: " + (m_folder / "zone.inc").string() + ":2: ";
  EXPECT_EQ(outcome.err.find(place + "expected TZ \"x\""), 0U) << outcome.err;
}

TEST_F(Scenario, RunsEachFileOfAFolderAndPrintsTheSummary) {
  write("1", "expect get date-format 0\n");
  write("2", "set date-format 1\nexpect get date-format 0\n");
  write("3", "expect get date-format 0\n");
  const Outcome stopped = runHost({"--scenario", m_folder.path()});
  EXPECT_EQ(stopped.status, 1);
  EXPECT_EQ(stopped.out, "3 scenarios: 1 passed, 1 failed, 1 not run\n");
  EXPECT_NE(stopped.err.find("2.scenario:2: expected date-format \"0\", got \"1\""),
            std::string::npos);
  const Outcome all = runHost({"--scenario", m_folder.path(), "--keep-going", "--jobs", "3"});
  EXPECT_EQ(all.status, 1);
  EXPECT_EQ(all.out, "3 scenarios: 2 passed, 1 failed\n");
  EXPECT_EQ(all.err, stopped.err);
}

TEST_F(Scenario, ReportsInTheTapFormat) {
  const std::string first = write("1", "clock show\n");
  const std::string second = write("2", "expect tz x\n");
  const std::string third = write("3", "clock show\n");
  const Outcome outcome = runHost({"--tap", "--scenario", first, second, "--scenario", third});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out,
            "TAP version 13\n1..3\nok 1 - " + first + "\nnot ok 2 - " + second + "\n# " + second +
                ":1: expected TZ \"x\", got \"LOC00:00\"\n#   time: 2016-06-16T00:00:00Z, local "
                "2016-06-16 00:00:00 (LOC, UTC+00:00)\nok 3 - " +
                third + " # SKIP not run\n# 3 scenarios: 1 passed, 1 failed, 1 not run\n");
}

// Each has a telephone of its own, although they run at the same time.
TEST_F(Scenario, RunsInParallel) {
  Words options = {"--jobs", "8", "--scenario"};
  for (int i = 1; i <= 8; ++i) {
    const std::string minutes = std::to_string(i);
    options.push_back(write(minutes, "set daylight-save-minutes " + minutes +
                                         "\nclock advance 3h\nrestart\n"
                                         "expect get daylight-save-minutes " +
                                         minutes + "\nexpect file /data/x x\n"));
  }
  options.push_back("--keep-going");
  const Outcome outcome = runHost(options);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "8 scenarios: 0 passed, 8 failed\n");
  std::size_t at = 0;
  for (int i = 1; i <= 8; ++i) {
    at = outcome.err.find('/' + std::to_string(i) + ".scenario:5: expected a file /data/x", at);
    EXPECT_NE(at, std::string::npos) << i << '\n' << outcome.err;
  }
}

}  // namespace
}  // namespace integration
