// The rows of bad-inputs.txt that need a host or files.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "base/ReplaceAll.h"
#include "integration/RestartableHost.h"
#include "scenario/ScenarioWords.h"
#include "support/BadInputs.h"

namespace integration {
namespace {

using support::BadInput;

// A host whose folder has the files that the rows name.
class BadInputs : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directory(m_host.folder() / "empty");
    const std::pair<const char*, const char*> files[] = {
        {"watch", "watch"},
        {"log", "log --follow"},
        {"exists", ""},
        {"good.scenario", "variant 3"},
        {"bare.scenario", "include"},
        {"lost.scenario", "include none"},
        {"circle.scenario", "include circle.scenario"}};
    for (const auto& [name, text] : files) {
      std::ofstream(m_host.folder() / name) << text << '\n';
    }
  }

  [[nodiscard]] std::string inFolder(const std::string& text) const {
    return host::replaceAll(text, BadInput::kFolder, m_host.folder().string() + '/');
  }

  Outcome run(const BadInput& row) {
    const Words words = host::splitScenarioLine(inFolder(row.input));
    if (row.program == "clockctl") return m_host.ctl(words);
    Words command = {CLOCKHOST, "--plugin", CLOCK_PLUGIN};
    command.insert(command.end(), words.begin(), words.end());
    return Program(m_host.folder(), "refusing", command).wait();
  }

  RunningHost m_host;
};

TEST_F(BadInputs, AreRefusedByTheProgramsWithTheirLine) {
  std::size_t rows = 0;
  for (const BadInput& row : support::badInputs()) {
    if (row.needsNothing()) continue;
    ++rows;
    const Outcome outcome = run(row);
    EXPECT_EQ(outcome.status, row.status) << row.input;
    if (row.status == 0) continue;
    EXPECT_EQ(outcome.err, inFolder(row.line) + '\n') << row.input;
    EXPECT_EQ(outcome.out, "") << row.input;
  }
  EXPECT_GT(rows, 30U);
}

}  // namespace
}  // namespace integration
