#include "manual/Completion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "integration/Programs.h"
#include "support/TemporaryFolder.h"
#include "verbs/KeyCatalogue.h"
#include "verbs/MethodCatalogue.h"
#include "verbs/Verb.h"

namespace host {
namespace {

bool has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

std::string wordsAt(const std::string& arguments) {
  for (const Position& position : ctlWords().positions) {
    if (position.arguments != arguments) continue;
    std::string words;
    for (const Candidate& candidate : position.words) words += candidate.word + ' ';
    return words;
  }
  return "nothing";
}

TEST(Completion, KnowsEachVerbAndAction) {
  for (const Verb& verb : allVerbs()) {
    EXPECT_TRUE(has(wordsAt(""), std::string(verb.name) + ' ')) << verb.name;
    for (const VerbAction& action : verb.actions) {
      EXPECT_TRUE(has(wordsAt(std::string(verb.name)), std::string(action.name))) << action.name;
    }
  }
  EXPECT_TRUE(has(wordsAt(""), "help "));
  EXPECT_EQ(wordsAt("clock to"), "hour midnight dst leap-day 2038 ");
  EXPECT_EQ(wordsAt("inject user-data *"), "on off ");
}

TEST(Completion, KnowsKeysAndMethods) {
  for (const auto& row : managementKeys()) {
    EXPECT_TRUE(has(wordsAt("get"), std::string(row.name) + ' ')) << row.name;
  }
  for (const auto& row : remoteMethods()) {
    EXPECT_TRUE(has(wordsAt("call"), std::string(row.name) + ' ')) << row.name;
  }
  EXPECT_EQ(wordsAt("keys"), wordsAt("get"));
  EXPECT_EQ(wordsAt("methods"), wordsAt("call"));
  EXPECT_EQ(wordsAt("events"),
            "timezoneChangeEvent timeChangeEvent dateChangeEvent alarmClockEvent ");
}

TEST(Completion, KnowsTheParametersOfEachMethod) {
  for (const auto& row : remoteMethods()) {
    std::string names;
    for (const auto& parameter : row.request) names += std::string(parameter.name) + "= ";
    const std::string call = "call " + std::string(row.name);
    EXPECT_EQ(wordsAt(call), names.empty() ? "nothing" : names) << row.name;
    EXPECT_EQ(wordsAt(call + " *"), wordsAt(call)) << row.name;
  }
}

TEST(Completion, HasAllOfItInEachShell) {
  for (const ProgramWords& program : {hostWords(), ctlWords()}) {
    for (const std::string& script :
         {bashCompletion(program), zshCompletion(program), fishCompletion(program)}) {
      for (const Option& option : program.options) {
        EXPECT_TRUE(has(script, std::string(option.name.substr(2)))) << option.name;
      }
      for (const Position& position : program.positions) {
        for (const Candidate& candidate : position.words) {
          EXPECT_TRUE(has(script, candidate.word)) << candidate.word;
        }
      }
    }
  }
}

// What bash offers at the end of a command line.
std::string offered(const ProgramWords& program, const std::string& line) {
  const support::TemporaryFolder folder;
  const std::string script = bashCompletion(program) + "COMP_WORDS=(" + line +
                             ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n" +
                             "compopt() { echo \"$*\"; }\n_" + program.name +
                             "\necho \"${COMPREPLY[*]}\"\n";
  const auto outcome =
      integration::Program(folder.path(), "bash", {"/bin/bash", "-euc", script}).wait();
  EXPECT_EQ(outcome.err, "");
  return outcome.out;
}

TEST(BashCompletion, OffersWhatMayComeNext) {
  const std::pair<const char*, const char*> rows[] = {
      {"clockctl sta", "status\n"},
      {"clockctl --json clock ju", "jump\n"},
      {"clockctl --socket /x clock to ''", "hour midnight dst leap-day 2038\n"},
      {"clockctl get date-f", "date-format\n"},
      {"clockctl call getTimeV", "getTimeVal\n"},
      {"clockctl call setDate setDateM", "-o nospace\nsetDateMonth=\n"},
      {"clockctl call setDate setDateDay = 1 ''",
       "-o nospace\nsetDateDay= setDateMonth= setDateYear=\n"},
      {"clockctl call getTime ''", "\n"},
      {"clockctl inject user-data date-format ''", "on off\n"},
      {"clockctl help inj", "inject\n"},
      {"clockctl watch time", "timezoneChangeEvent timeChangeEvent\n"},
      {"clockctl wait timeChangeEvent date", "dateChangeEvent\n"},
      {"clockctl watch --for 5s --co", "--count --control-socket\n"},
      {"clockctl --ti", "--timeout\n"},
      {"clockctl -f get ge", "get\n"},
  };
  for (const auto& [line, words] : rows) EXPECT_EQ(offered(ctlWords(), line), words) << line;
  EXPECT_EQ(offered(hostWords(), "clockhost --network ''"), "up down\n");
  EXPECT_EQ(offered(hostWords(), "clockhost --sta"), "--state\n");
}

}  // namespace
}  // namespace host
