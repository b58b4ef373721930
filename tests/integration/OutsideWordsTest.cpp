// Words of any bytes and of any length at clockctl and clockhost: an error is one short line that
// leaves the terminal alone, and an answer that cannot be given is refused.
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "integration/RestartableHost.h"
#include "remote/RemoteClient.h"

namespace integration {
namespace {

using nlohmann::json;

constexpr std::size_t kMebibyte = std::size_t{1024} * 1024;
constexpr std::size_t kLongestLine = 1200;  // bytes

bool isPrintable(char byte) {
  return byte >= ' ' && byte != '\x7F';
}

void expectOneShortLine(const Outcome& outcome, int status, const std::string& part) {
  EXPECT_EQ(outcome.status, status) << outcome.err;
  EXPECT_TRUE(outcome.out.empty());
  EXPECT_NE(outcome.err.find(part), std::string::npos) << outcome.err;
  EXPECT_LE(outcome.err.size(), kLongestLine);
  const auto odd = std::find_if_not(outcome.err.begin(), outcome.err.end(), isPrintable);
  EXPECT_EQ(odd - outcome.err.begin(), static_cast<std::ptrdiff_t>(outcome.err.size()) - 1)
      << testing::PrintToString(outcome.err);
  EXPECT_EQ(outcome.err.back(), '\n');
}

struct Wrong {
  Words words;
  int status;
  const char* part;
};

TEST(OutsideWords, AreEchoedInOneLine) {
  RunningHost host;
  const Wrong rows[] = {
      {{"get", "a\nb"}, 1, "no key \"a\\nb\"; `clockctl keys` lists them"},
      {{"set", "daylight-save", "\x1b[2J\r"}, 1, "refused \"\\x1B[2J\\x0D\"; it takes"},
      {{"--timeout", "0.2", "call", "get\nTime"}, 1, "no method \"get\\nTime\""},
      {{"x\ny"}, 2, "unknown verb \"x\\ny\"; `clockctl --help` lists the verbs"},
      {{"clock", "spe\ned"}, 2, "\"spe\\ned\" is not show"},
      {{"clock", "jump", "a\nb"}, 2, "\"a\\nb\" is not an instant"},
      {{"call", "getTime", "a\nb"}, 2, "\"a\\nb\" is not an argument"},
      {{"inject", "jack", "\n", "1"}, 2, "\"\\n\" is not a number"},
      {{"--wro\nng"}, 2, "--wro\\nng"},
      {{"--timeout", "1\n2", "keys"}, 2, "1\\n2"},
  };
  for (const Wrong& row : rows) expectOneShortLine(host.ctl(row.words), row.status, row.part);
}

TEST(OutsideWords, AreClippedWhenTheyAreLong) {
  RunningHost host;
  const std::string length(100'000, 'x');
  const Wrong rows[] = {
      {{"get", length}, 1, "...\" (100000 bytes)"},
      {{"set", "daylight-save", length}, 1, "...\" (100000 bytes); it takes true or false"},
      {{"--timeout", "0.2", "call", length}, 1, "...\" (100000 bytes)"},
      {{length}, 2, "...\" (100000 bytes)"},
      {{"clock", "advance", length}, 2, "...\" (100000 bytes) is not a duration; write `90s`"},
      {{"--" + length}, 2, "; `clockctl --help` lists"},
      {{"--timeout=" + length, "status"}, 2, "; `clockctl --help` lists"},
  };
  for (const Wrong& row : rows) expectOneShortLine(host.ctl(row.words), row.status, row.part);
}

TEST(OutsideWords, ThatAreNoUtf8AreWrongUsage) {
  RunningHost host;
  const Wrong rows[] = {
      {{"get", "\xff"}, 2, "KEY must be UTF-8 text"},
      {{"set", "\xff", "1"}, 2, "KEY must be UTF-8 text"},
      {{"set", "ntp-secret", "caf\xe9"}, 2, "VALUE must be UTF-8 text"},
      {{"call", "\xc3"}, 2, "METHOD must be UTF-8 text"},
      {{"call", "getTime", "a=\xff"}, 2, "NAME=VALUE must be UTF-8 text"},
      {{"inject", "dhcp", "\xff"}, 2, "VALUE must be UTF-8 text"},
      {{"inject", "value", "\xff", "1"}, 2, "KEY must be UTF-8 text"},
      {{"inject", "value", "k", "\xff"}, 2, "TEXT must be UTF-8 text"},
      {{"\xff"}, 2, "unknown verb \"\\xFF\"; `clockctl --help` lists the verbs"},
      {{"inject", "network", "\xff"}, 2, "\"\\xFF\" is not up or down"},
      {{"clock", "speed", "\xff"}, 2, "\"\\xFF\" is not a speed"},
      {{"log", "\xff"}, 2, "\"\\xFF\" is one word too many"},
  };
  for (const Wrong& row : rows) expectOneShortLine(host.ctl(row.words), row.status, row.part);
  EXPECT_EQ(host.ctl({"get", "date-format"}).out, "0\n");
}

TEST(OutsideWords, OfAMegabyteLeaveEveryListReadable) {
  RunningHost running;
  host::RemoteClient client(running.controlSocket());
  const std::string secret(kMebibyte - 100, 's');
  const json set = {{"verb", "set"}, {"key", "ntp-secret"}, {"value", secret}};
  EXPECT_EQ(client.control(set.dump(), std::chrono::seconds(10)), R"({"ok":true})");
  EXPECT_TRUE(running.ctl({"get", "ntp-secret"}).out == secret + '\n');
  EXPECT_EQ(running.ctl({"keys"}).status, 0);
  EXPECT_EQ(json::parse(running.ctl({"--json", "keys"}).out).at("keys").size(), 16U);
  EXPECT_EQ(json::parse(running.ctl({"--json", "security-log"}).out).at("records").size(), 1U);
  EXPECT_EQ(running.ctl({"log"}).status, 0);
}

// A host that cannot start.
TEST(OutsideWords, AtTheHostAreEchoedInOneLine) {
  const RestartableHost host;
  const std::string length(100'000, 'x');
  const Wrong rows[] = {
      {{"--plugin", "no\nplugin"}, 1, "no\\nplugin"},
      {{"--state", "/dev/null/no\nfolder"}, 1, "no\\nfolder"},
      {{"--at", "a\nb\xff"}, 2, "\"a\\nb\\xFF\" is not an instant"},
      {{"--wro\nng"}, 2, "--wro\\nng"},
      {{"--mac", length}, 2, "see clockhost --help"},
      {{"--scenario", host.folder() / "no\nfile"}, 2, "no\\nfile: cannot be read"},
  };
  for (const Wrong& row : rows)
    expectOneShortLine(host.startAnother(row.words), row.status, row.part);
}

}  // namespace
}  // namespace integration
