// A recording is replayed when it ends, and keeps what passes.
#include "apps/Replay.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "apps/RecordedFile.h"
#include "support/FileContent.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

class Replay : public ::testing::Test {
 protected:
  std::string keep(const Replayer& replayer = {CLOCKHOST, CLOCK_PLUGIN}) {
    return keepWhatReplays(file, replayer, "write a shorter one");
  }
  std::string content() const { return support::contentOf(file.path()); }

  const support::TemporaryFolder folder;
  RecordedFile file{folder.path() / "a recording", false};
};

TEST_F(Replay, WhatPassesStaysAsItIs) {
  file.add("clock advance 1s");
  file.add("expect call getTime getTimeStringReturn=00:00");
  EXPECT_EQ(keep(), "");
  EXPECT_EQ(content(), "clock advance 1s\nexpect call getTime getTimeStringReturn=00:00\n");
}

TEST_F(Replay, TheRestFromADifferentAnswerOnBecomesComments) {
  file.add("clock advance 1s");
  file.add("expect call getTime getTimeStringReturn=12:34  # client-7");
  file.add("# a comment");
  file.add("clock advance 1s");
  const std::string said = keep();
  EXPECT_NE(said.find("holds comments from line 2 on, where its replay differed: expected a reply "
                      "with getTimeStringReturn=12:34, got getTimeStringReturn=00:00; write a "
                      "shorter one"),
            std::string::npos)
      << said;
  EXPECT_EQ(content(),
            "clock advance 1s\n"
            "# not replayed: expect call getTime getTimeStringReturn=12:34  # client-7\n"
            "# a comment\n"
            "# not replayed: clock advance 1s\n");
  EXPECT_EQ(keep(), "");
}

TEST_F(Replay, ALineThatAScenarioCannotReadBecomesAComment) {
  file.add("expect call getTime getTimeStringReturn=12:34");
  file.add("clock fly");
  EXPECT_NE(keep(), "");
  EXPECT_EQ(content(),
            "# not replayed: expect call getTime getTimeStringReturn=12:34\n"
            "# not replayed: clock fly\n");
}

TEST_F(Replay, WithoutClockhostTheFileIsNotKnownToPass) {
  file.add("clock advance 1s");
  const std::string said = keep({folder.path() / "none", ""});
  EXPECT_NE(said.find("a recording\" could not be replayed: "), std::string::npos) << said;
  EXPECT_NE(said.find("No such file or directory; check it with `clockhost --scenario`"),
            std::string::npos)
      << said;
  EXPECT_EQ(content(), "clock advance 1s\n");
}

TEST_F(Replay, ThePlugInIsTheReplayers) {
  file.add("clock advance 1s");
  EXPECT_NE(keep({CLOCKHOST, folder.path() / "another.so"}).find("another.so"), std::string::npos);
}

TEST_F(Replay, ADeviceIsNotReplayed) {
  RecordedFile device("/dev/null", true);
  EXPECT_EQ(keepWhatReplays(device, {folder.path() / "none", ""}, ""), "");
}

}  // namespace
}  // namespace host
