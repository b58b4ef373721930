// The rows of bad-inputs.txt that need no host. integration/BadInputsProgramTest.cpp has the
// others.
#include <gtest/gtest.h>

#include <sstream>

#include "apps/ClockCtl.h"
#include "apps/HostOptions.h"
#include "base/DefaultPaths.h"
#include "base/PrintableText.h"
#include "scenario/ScenarioParser.h"
#include "scenario/ScenarioWords.h"
#include "support/BadInputs.h"
#include "verbs/UsageError.h"

namespace host {
namespace {

using support::BadInput;

constexpr int kUsage = 2;

// What a person sees, without the end of the line.
std::string errorOfClockCtl(const std::string& input, int& status) {
  std::ostringstream out;
  std::ostringstream err;
  status = runClockCtl(splitScenarioLine(input), "/nowhere", out, err);
  EXPECT_EQ(out.str(), "") << input;
  return err.str();
}

std::string errorOfClockHost(const std::string& input) try {
  std::ostringstream out;
  const DefaultPaths paths = {"/lib/plugin.so", "/state", "/run/socket", "/bin"};
  static_cast<void>(readHostOptions(splitScenarioLine(input), paths, out));
  return "accepted";
} catch (const UsageError& error) {
  return errorLine("clockhost", error.what());
}

std::string errorOfScenario(const std::string& input) try {
  std::istringstream text(input);
  static_cast<void>(readScenario(text));
  return "accepted";
} catch (const UsageError& error) {
  return escapedLine(std::string("FILE:") + error.what()) + '\n';
}

TEST(BadInputs, AreRefusedWithTheirLine) {
  std::size_t rows = 0;
  for (const BadInput& row : support::badInputs()) {
    if (!row.needsNothing()) continue;
    const auto& [program, input, status, line] = row;
    ++rows;
    int got = kUsage;
    const std::string error = program == "clockctl"    ? errorOfClockCtl(input, got)
                              : program == "clockhost" ? errorOfClockHost(input)
                                                       : errorOfScenario(input);
    EXPECT_EQ(error, line + '\n') << program << ' ' << input;
    EXPECT_EQ(got, kUsage) << program << ' ' << input;
  }
  EXPECT_GT(rows, 200U);
}

}  // namespace
}  // namespace host
