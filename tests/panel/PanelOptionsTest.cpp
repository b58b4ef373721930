#include "PanelOptions.h"

#include <gtest/gtest.h>

#include "manual/ManPage.h"
#include "support/FileContent.h"
#include "verbs/UsageError.h"

namespace panel {
namespace {

PanelOptions optionsOf(const std::vector<std::string>& words) {
  PanelOptions options;
  host::OptionParser parser = panelOptionParser(options, "/run/clockhost.sock");
  static_cast<void>(parser.read(words));
  return options;
}

std::string refusalOf(const std::vector<std::string>& words) {
  try {
    optionsOf(words);
    return "";
  } catch (const host::UsageError& error) {
    return error.what();
  }
}

TEST(PanelOptions, ListenAtAnyFreePortOfTheLoopbackAddress) {
  EXPECT_EQ(optionsOf({}).listen, "127.0.0.1:0");
}

TEST(PanelOptions, TakeManySocketsWithTheirControlSockets) {
  const auto hosts = optionsOf({"--socket", "a.sock", "b.sock"}).hosts;
  ASSERT_EQ(hosts.size(), 2U);
  EXPECT_EQ(hosts[1].call, "b.sock");
  EXPECT_EQ(hosts[1].control, "b.sock.control");
}

TEST(PanelOptions, RefuseASeventeenthSocket) {
  std::vector<std::string> words{"--socket"};
  words.resize(17, "a.sock");
  EXPECT_EQ(optionsOf(words).hosts.size(), 16U);
  words.emplace_back("a.sock");
  EXPECT_NE(refusalOf(words).find("a panel shows at most 16 telephones"), std::string::npos);
}

TEST(PanelOptions, TakeThePortOfATimeServer) {
  EXPECT_EQ(optionsOf({"--time-server", "65535"}).timeServer, 65535);
  for (const char* const wrong : {"", "0", "65536", "-1", "12x"}) {
    EXPECT_NE(refusalOf({"--time-server", wrong}).find("--time-server"), std::string::npos)
        << wrong;
  }
}

TEST(PanelOptions, RefuseAnEmptySocket) {
  EXPECT_NE(refusalOf({"--socket", ""}), "");
}

TEST(ManPageOfThePanel, HasEachOptionAndStatus) {
  const std::string page = ::support::contentOf(CLOCK_MANUAL "/clockpanel.1");
  PanelOptions options;
  const auto parser = panelOptionParser(options, "/run/clockhost.sock");
  for (const host::Option& option : parser.options()) {
    EXPECT_NE(page.find("\\fB" + host::roff(host::usageOf(option)) + "\\fR\n"), std::string::npos)
        << option.name;
  }
  for (const auto& [status, meaning] : parser.program().statuses) {
    EXPECT_NE(page.find(host::roff(meaning)), std::string::npos) << status;
  }
  EXPECT_EQ(page.find("/run/clockhost.sock"), std::string::npos);
}

}  // namespace
}  // namespace panel
