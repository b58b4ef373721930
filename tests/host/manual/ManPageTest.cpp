#include "manual/ManPage.h"

#include <gtest/gtest.h>

#include "apps/ClockCtlOptions.h"
#include "apps/HostOptions.h"
#include "support/FileContent.h"
#include "verbs/Verb.h"

namespace host {
namespace {

using ::support::contentOf;

bool shows(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(Roff, ShowsEachCharacterAsItIsAndCodeInBold) {
  EXPECT_EQ(roff("a\\b -c"), "a\\eb \\-c");
  EXPECT_EQ(roff(".TH"), "\\&.TH");
  EXPECT_EQ(roff("'x"), "\\&'x");
  EXPECT_EQ(roff("see `clock` now"), "see \\fBclock\\fR now");
}

TEST(ManPage, HasEachOptionAndStatus) {
  HostOptions hostOptions;
  ClockCtlOptions ctlOptions;
  const std::pair<OptionParser, std::string> rows[] = {
      {hostOptionParser(hostOptions), clockHostPage("2026-03-08")},
      {clockCtlOptionParser(ctlOptions), clockCtlPage("2026-03-08")}};
  for (const auto& [parser, page] : rows) {
    for (const Option& option : parser.options()) {
      EXPECT_TRUE(shows(page, ".TP\n\\fB" + roff(usageOf(option)) + "\\fR\n" + roff(option.help)))
          << option.name;
    }
    for (const ExitStatus& status : parser.program().statuses) {
      EXPECT_TRUE(shows(page, roff(status.meaning))) << status.status;
    }
    EXPECT_TRUE(shows(page, " 1 2026-03-08 "));
    EXPECT_FALSE(shows(page, "\\e\\-")) << "a text was escaped twice";
  }
}

TEST(ManPage, HasEachVerbActionAndWord) {
  const std::string page = clockCtlPage("2026-03-08");
  for (const Verb& verb : allVerbs()) {
    EXPECT_TRUE(shows(page, roff(verbUsage(verb)) + "\\fR\n" + roff(verb.help))) << verb.name;
    for (const VerbAction& action : verb.actions) {
      EXPECT_TRUE(shows(page, roff(actionUsage(verb, action)))) << action.name;
    }
  }
  for (const WordForm& form : wordForms())
    EXPECT_TRUE(shows(page, roff(form.meaning))) << form.word;
}

TEST(ManPage, OfTheDocumentsHasNameAndText) {
  for (const char* const page : {"clock-scenario.5", "clock-protocol.7"}) {
    const std::string text = contentOf(std::string(CLOCK_MANUAL) + '/' + page);
    EXPECT_TRUE(shows(text, ".SH NAME\nclock\\-")) << page;
    EXPECT_TRUE(shows(text, " of the clock host\n.SH DESCRIPTION\n")) << page;
    EXPECT_GT(text.size(), 5000U) << page;
  }
}

// A verb's own words are on the page's other lines.
TEST(CommandLinesPage, NamesEachOption) {
  const std::string page = contentOf(std::string(CLOCK_DOCS) + "/command-lines.md");
  HostOptions hostOptions;
  ClockCtlOptions ctlOptions;
  for (const OptionParser& parser :
       {hostOptionParser(hostOptions), clockCtlOptionParser(ctlOptions)}) {
    for (const Option& option : parser.options()) {
      EXPECT_TRUE(shows(page, '`' + std::string(option.name))) << option.name;
    }
    for (const auto& [status, meaning] : parser.program().statuses) {
      EXPECT_TRUE(shows(page, "| " + std::to_string(status) + " | " + std::string(meaning) + " |"))
          << meaning;
    }
  }
}

}  // namespace
}  // namespace host
