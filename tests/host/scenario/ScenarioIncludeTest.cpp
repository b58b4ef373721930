// `include` lines: what is read, and what is refused.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "scenario/ScenarioParser.h"

namespace host {
namespace {

// Reads the files by their names, as files in one folder.
Scenario parsedFiles(const std::map<std::string, std::string>& files) {
  std::istringstream stream(files.at("all/main"));
  return readScenario(stream, "all/main", [&files](const std::filesystem::path& file) {
    const auto found = files.find(file.string());
    if (found == files.end()) throw UsageError(file.string() + ": cannot be read");
    return found->second;
  });
}

std::string faultOfFiles(const std::map<std::string, std::string>& files) {
  try {
    return "accepted, steps: " + std::to_string(parsedFiles(files).steps.size());
  } catch (const ScenarioTextError& error) {
    return error.what();
  }
}

TEST(ScenarioInclude, ReadsTheFileInPlaceOfTheLine) {
  const Scenario scenario = parsedFiles({{"all/main", "include ../zones/west\nget time\n"},
                                         {"zones/west", "variant 3\n\ninclude deep\nreset\n"},
                                         {"zones/deep", "\xEF\xBB\xBFkeys\n"}});
  EXPECT_EQ(scenario.device.variant, 3);
  ASSERT_EQ(scenario.steps.size(), 3U);
  EXPECT_EQ(scenario.steps[0].line, 1);
  EXPECT_EQ(scenario.steps[0].included, "zones/west:3: zones/deep:1: ");
  EXPECT_EQ(scenario.steps[1].included, "zones/west:4: ");
  EXPECT_EQ(scenario.steps[2].line, 2);
  EXPECT_EQ(scenario.steps[2].included, "");
}

TEST(ScenarioInclude, NamesEachFileOnTheWay) {
  const std::pair<std::map<std::string, std::string>, const char*> rows[] = {
      {{{"all/main", "\ninclude a"}, {"all/a", "keys\nvarient 3"}},
       "2: all/a:2: unknown step \"varient\"; did you mean \"variant\"?"},
      {{{"all/main", "include none"}}, "1: all/none: cannot be read"},
      {{{"all/main", "include main"}},
       "1: \"all/main\" includes itself, perhaps through other files; remove this line"},
      {{{"all/main", "include a"}, {"all/a", "\ninclude ../all/main"}},
       "1: all/a:2: \"all/main\" includes itself, perhaps through other files; remove this line"},
      {{{"all/main", "include"}}, "1: FILE is missing (usage: include FILE)"},
      {{{"all/main", "include a b"}}, "1: \"b\" is one word too many (usage: include FILE)"},
      {{{"all/main", "include \"\""}}, "1: there is no file to include (usage: include FILE)"},
      {{{"all/main", "keys\ninclude a"}, {"all/a", "variant 3"}},
       "2: all/a:1: \"variant\" configures the device before power-on; put it before the first "
       "step"},
  };
  for (const auto& [files, error] : rows) EXPECT_EQ(faultOfFiles(files), error);
}

TEST(ScenarioInclude, DepthAndNumberAreBounded) {
  std::map<std::string, std::string> chain = {{"all/main", "include 1"}};
  for (std::size_t depth = 1; depth < kDeepestInclude; ++depth) {
    chain["all/" + std::to_string(depth)] = "include " + std::to_string(depth + 1);
  }
  std::string& last = chain["all/" + std::to_string(kDeepestInclude)];
  last = "keys";
  EXPECT_EQ(faultOfFiles(chain), "accepted, steps: 1");
  last = "include more";
  EXPECT_THAT(faultOfFiles(chain), testing::HasSubstr("included more than 8 deep; include them"));

  std::string many;
  for (std::size_t i = 0; i < kMostIncludes; ++i) many += "include a\n";
  EXPECT_EQ(faultOfFiles({{"all/main", many}, {"all/a", "keys"}}), "accepted, steps: 1000");
  EXPECT_EQ(faultOfFiles({{"all/main", many + "include a"}, {"all/a", "keys"}}),
            "1001: more than 1000 files are included; write a smaller scenario");
}

}  // namespace
}  // namespace host
