// A host's two sockets: one for the telephone's calls, one for its operator.
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>

#include "integration/RestartableHost.h"

namespace integration {
namespace {

std::string modeOf(const std::filesystem::path& file) {
  struct stat found {};
  if (::lstat(file.c_str(), &found) != 0 || !S_ISSOCK(found.st_mode)) return "no socket";
  std::array<char, 16> text;
  std::snprintf(text.data(), text.size(), "%04o", found.st_mode & 07777U);
  return text.data();
}

TEST(Sockets, AreTwoAndTheOwnersAlone) {
  RunningHost host;
  EXPECT_EQ(modeOf(host.socket()), "0600");
  EXPECT_EQ(modeOf(host.controlSocket()), "0600");
  EXPECT_EQ(host.ctl({"call", "getTime"}).out, "getTimeStringReturn=00:00\n");
  EXPECT_EQ(host.ctl({"get", "date-format"}).out, "0\n");
  EXPECT_EQ(host.end(SIGTERM).status, 0);
  EXPECT_EQ(modeOf(host.socket()), "no socket");
  EXPECT_EQ(modeOf(host.controlSocket()), "no socket");
}

TEST(Sockets, OnlyThatOfTheCallsIsGivenToAGroup) {
  const group* const own = ::getgrgid(::getegid());  // NOLINT(concurrency-mt-unsafe)
  ASSERT_NE(own, nullptr) << "this user's group has no name";
  RunningHost host({"--socket-group", own->gr_name});
  EXPECT_EQ(modeOf(host.socket()), "0660");
  EXPECT_EQ(modeOf(host.controlSocket()), "0600");
}

TEST(Sockets, ThatOfTheOperatorMayBeElsewhere) {
  const support::TemporaryFolder elsewhere;
  const std::string control = elsewhere / "control";
  RunningHost host({"--control-socket", control});
  EXPECT_EQ(modeOf(control), "0600");
  EXPECT_EQ(modeOf(host.controlSocket()), "no socket");
  EXPECT_EQ(host.ctl({"--control-socket", control, "get", "date-format"}).out, "0\n");
  EXPECT_EQ(host.ctl({"--control-socket", control, "call", "getTime"}).out,
            "getTimeStringReturn=00:00\n");
}

TEST(Sockets, RefuseWhatBelongsToTheOther) {
  RunningHost host;
  const Outcome control = host.ctl({"--control-socket", host.socket(), "clock", "advance", "1h"});
  EXPECT_EQ(control.status, 1);
  EXPECT_EQ(control.err, "clockctl: control requests are not taken here; send them to " +
                             host.controlSocket().string() + "\n");
  for (const char* const method : {"getTime", "setTimeInt"}) {
    const Outcome call = host.ctl({"--socket", host.controlSocket(), "call", method});
    EXPECT_EQ(call.status, 1) << method;
    EXPECT_EQ(call.err,
              "clockctl: calls are not taken here; send them to " + host.socket().string() + "\n");
  }
  const Outcome watch = host.ctl({"--socket", host.controlSocket(), "watch"});
  EXPECT_EQ(watch.status, 1);
  EXPECT_EQ(host.ctl({"call", "getTime"}).out, "getTimeStringReturn=00:00\n");
}

}  // namespace
}  // namespace integration
