// clockhost --scenario FILE: its exit status and what it writes.
#include <gtest/gtest.h>

#include <fstream>

#include "integration/OneLine.h"
#include "support/TemporaryFolder.h"

namespace integration {
namespace {

class Scenario : public ::testing::Test {
 protected:
  Outcome run(const std::string& text, Words command = {}) {
    std::ofstream(m_file) << text;
    const Words host = {CLOCKHOST, "--plugin", CLOCK_PLUGIN, "--scenario", m_file};
    command.insert(command.end(), host.begin(), host.end());
    return Program(m_folder.path(), "clockhost", command).wait();
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
  expectOneLine(run("\nexpect get date-format 2"), 1,
                {m_file + ":2: expected date-format \"2\", got \"0\""});
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

}  // namespace
}  // namespace integration
