// The host's NTP client as a process: what it gets, what it may do, and that it sets the clock.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <sstream>

#include "base/Descriptor.h"
#include "host/ntpclient/FakeSntpServer.h"
#include "integration/RestartableHost.h"
#include "support/FileContent.h"

namespace integration {
namespace {

namespace fs = std::filesystem;

// A telephone whose client has asked the time server and waits for its answer.
class TelephoneWithAClient : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(::fcntl(inherited.get(), F_SETFD, 0), 0);
    // NOLINTNEXTLINE(concurrency-mt-unsafe)
    ::setenv("NTPCLIENT_PORT", server.port().c_str(), 1);
    running.emplace(Words{"--network", "up"});
    ASSERT_EQ(running->ctl({"set", "sntp-addr", "127.0.0.1"}).status, 0);
    request = server.receive();
    ASSERT_TRUE(request);
  }

  // The folder of the client's process.
  [[nodiscard]] fs::path process() {
    std::istringstream status(running->ctl({"status"}).out);
    for (std::string word; status >> word;) {
      if (word == "process" && status >> word) return fs::path("/proc") / word;
    }
    return "/no/client";
  }

  // The host inherits it.
  const host::Descriptor inherited{::open("/dev/null", O_RDONLY | O_CLOEXEC)};
  host::ntp::FakeSntpServer server;
  std::optional<RunningHost> running;
  std::optional<host::ntp::Bytes> request;
};

TEST_F(TelephoneWithAClient, HasTheClockSetByIt) {
  server.answer(host::ntp::answerTo(host::ntp::nonceOf(*request), host::ntp::kTime));
  EXPECT_TRUE(running->waitFor({"clock"}, "2026-05-28T20:26:40Z")) << running->ctl({"clock"}).out;
  EXPECT_TRUE(running->waitFor({"call", "isTimeSourceSntp"}, "true")) << running->program().err();
}

TEST_F(TelephoneWithAClient, GivesItNothingOfItsEnvironment) {
  std::set<std::string> names;
  std::istringstream variables(support::contentOf(process() / "environ"));
  for (std::string text; std::getline(variables, text, '\0');) {
    names.insert(text.substr(0, text.find('=')));
  }
  std::erase_if(names, [](const std::string& name) { return name.ends_with("SAN_OPTIONS"); });
  EXPECT_EQ(names,
            (std::set<std::string>{"CLOCKHOST_CLOCK_FD", "CLOCKHOST_PIPE", "NTPCLIENT_PORT"}));
}

// The kind of file behind a link in /proc/PID/fd: "socket:[12345]" is a socket.
std::string kindOf(const std::string& file) {
  if (file.find("pidfd") != std::string::npos) return "pidfd";
  if (!file.starts_with("socket:")) return "file";
  const std::string number = file.substr(8, file.size() - 9);
  return support::contentOf("/proc/net/udp").find(" " + number + " ") != std::string::npos
             ? "UDP"
             : "socket";
}

// The client's own are its watch of the host and the socket to its server.
TEST_F(TelephoneWithAClient, GivesItItsChannelAndNoOtherDescriptor) {
  ASSERT_TRUE(fs::exists("/proc/" + std::to_string(running->program().id()) + "/fd/" +
                         std::to_string(inherited.get())))
      << "the host has more to pass on";
  std::map<int, std::string> descriptors;
  for (const auto& entry : fs::directory_iterator(process() / "fd")) {
    descriptors[std::stoi(entry.path().filename())] = kindOf(fs::read_symlink(entry.path()));
  }
  EXPECT_EQ(descriptors,
            (std::map<int, std::string>{
                {0, "file"}, {1, "file"}, {2, "file"}, {3, "socket"}, {4, "pidfd"}, {5, "UDP"}}));
}

std::string fieldOf(const fs::path& process, const std::string& name) {
  std::ifstream status(process / "status");
  for (std::string word; status >> word;) {
    if (word == name + ":" && status >> word) return word;
  }
  return "none";
}

TEST_F(TelephoneWithAClient, KeepsItFromGainingPrivileges) {
  EXPECT_EQ(fieldOf(process(), "NoNewPrivs"), "1");
  EXPECT_EQ(fieldOf("/proc/" + std::to_string(running->program().id()), "NoNewPrivs"), "1");
#ifndef CLOCK_WITHOUT_FILTER
  constexpr const char* kFiltered = "2";
  EXPECT_EQ(fieldOf(process(), "Seccomp"), kFiltered);
#endif
}

}  // namespace
}  // namespace integration
