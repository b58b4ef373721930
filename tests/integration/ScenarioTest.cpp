#include <gtest/gtest.h>

#include <fstream>

#include "integration/Programs.h"
#include "support/TemporaryFolder.h"

namespace integration {
namespace {

Outcome runScenario(const support::TemporaryFolder& folder, const std::string& text) {
  const std::filesystem::path file = folder / "x.scenario";
  std::ofstream(file) << text;
  Program program(folder.path(), "clockhost",
                  {CLOCKHOST, "--plugin", CLOCK_PLUGIN, "--scenario", file});
  Outcome outcome = program.wait();
  // The folder is another one each time.
  if (const auto at = outcome.err.find(file.string()); at != std::string::npos) {
    outcome.err.replace(at, file.string().size(), "FILE");
  }
  return outcome;
}

TEST(Scenario, PassesInSilence) {
  const support::TemporaryFolder folder;
  const Outcome outcome = runScenario(folder,
                                      "variant 3\n"
                                      "set sntp-tz-offset -5\n"
                                      "clock jump 2026-03-08T06:59:50Z\n"
                                      "clock advance 10s\n"
                                      "expect call getTime getTimeStringReturn=03:00am\n"
                                      "expect event timeChangeEvent timeChangeEventHours=3\n");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "");
}

TEST(Scenario, FailsAtItsLineWithWhatCameInstead) {
  const std::pair<const char*, const char*> failing[] = {
      {"expect call getTime getTimeStringReturn=12:00",
       "FILE:1: expected a reply with getTimeStringReturn=12:00, came getTimeStringReturn=00:00\n"},
      {"\nexpect get date-format 2", "FILE:2: expected date-format \"2\", came \"0\"\n"},
      {"expect event dateChangeEvent", "FILE:1: expected event dateChangeEvent, came none\n"},
      {"clock advance 1h\nexpect no event",
       "FILE:2: expected no event, came timeChangeEvent timeChangeEventHours=1 "
       "timeChangeEventMinutes=0 timeChangeEventSeconds=0\n"},
      {"expect tz LOC-1:00", "FILE:1: expected TZ \"LOC-1:00\", came \"LOC00:00\"\n"},
      {"expect no file setupTZ.sh", "FILE:1: expected no file setupTZ.sh, came one\n"},
      {"expect file setupTZ.sh x",
       "FILE:1: expected a file setupTZ.sh with \"x\", came \"#!/bin/sh\\n\\nexport "
       "TZ=LOC00:00\\n\\n\"\n"},
      {"expect file /data/x x", "FILE:1: expected a file /data/x, came none\n"},
      {"expect state time 4", "FILE:1: expected the item state of time \"4\", came \"0\"\n"},
      {"expect report date-format 2", "FILE:1: expected a report of date-format 2, came none\n"},
      {"set daylight-save-zone-index 3\nexpect no report",
       "FILE:2: expected no report, came daylight-save-zone-id 3\n"},
      {"expect refused set date-format 1", "FILE:1: expected a refusal, came none: it was done\n"},
      {"expect refused call getTime",
       "FILE:1: expected no reply, came getTimeStringReturn=00:00\n"},
      {"set daylight-save yes",
       "FILE:1: expected it to be done, came a refusal: \"daylight-save\" refused \"yes\"; it "
       "takes true or false\n"},
      {"call nothing", "FILE:1: expected a reply, came none\n"},
      {"expect value mac-addr 1", "FILE:1: expected mac-addr \"1\", came no such value\n"},
  };
  for (const auto& [text, error] : failing) {
    const support::TemporaryFolder folder;
    const Outcome outcome = runScenario(folder, text);
    EXPECT_EQ(outcome.status, 1) << text;
    EXPECT_EQ(outcome.err, error) << text;
  }
}

TEST(Scenario, AWrongLineIsStatusTwoAndNothingRuns) {
  const support::TemporaryFolder folder;
  const Outcome outcome =
      runScenario(folder, "expect get date-format 2\nclock advance 3 parsecs\n");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err,
            "FILE:2: clock advance: \"3 parsecs\" is not a duration; write `90s`, `15m`, `2h`, "
            "`1d` or `00:30:00`\n");
}

TEST(Scenario, AMissingFileIsStatusTwo) {
  const support::TemporaryFolder folder;
  Program program(folder.path(), "clockhost",
                  {CLOCKHOST, "--plugin", CLOCK_PLUGIN, "--scenario", folder / "none"});
  EXPECT_EQ(program.wait().status, 2);
}

TEST(Scenario, AFileWithoutAnEndIsStatusTwo) {
  const support::TemporaryFolder folder;
  const Words words = {CLOCKHOST, "--plugin", CLOCK_PLUGIN, "--scenario", "/dev/zero"};
  const Outcome outcome = Program(folder.path(), "clockhost", words).wait(std::chrono::seconds(5));
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "/dev/zero: is too large; a scenario has at most 16 MiB\n");
}

TEST(Scenario, WithoutATemporaryFolderIsToldInOneLine) {
  const support::TemporaryFolder folder;
  const std::filesystem::path file = folder / "file";
  std::ofstream(file) << "clock show\n";
  const Words words = {"/usr/bin/env",
                       "TMPDIR=" + (folder / "none").string(),
                       CLOCKHOST,
                       "--plugin",
                       CLOCK_PLUGIN,
                       "--scenario",
                       file};
  const Outcome outcome = Program(folder.path(), "clockhost", words).wait();
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, file.string() + ": there is no temporary folder; let TMPDIR name one\n");
}

}  // namespace
}  // namespace integration
