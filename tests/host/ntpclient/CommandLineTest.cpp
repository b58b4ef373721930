#include "ntpclient/CommandLine.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <sstream>
#include <vector>

namespace host::ntp {
namespace {

std::optional<Assignment> parse(const std::string& line) {
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  return parseCommandLine(pointers);
}

TEST(CommandLine, IsReadAsTheServiceWritesIt) {
  const struct {
    const char* line;
    const char* server;
    int family;
    bool verbose;
  } rows[] = {
      {"-s -c 525600 -i 3600 -n 15 -h 127.0.0.1 -4", "127.0.0.1", AF_INET, false},
      {"-s -c 525600 -i 3600 -n 15 -h ::1 -6", "::1", AF_INET6, false},
      {"-s -c 525600 -i 3600 -n 15 -h 192.0.2.1", "192.0.2.1", AF_INET, false},
      {"-s -c 525600 -i 3600 -n 15 -h 2001:db8::1", "2001:db8::1", AF_INET6, false},
      {"-s -c 525600 -i 3600 -n 15 -h 127.0.0.1 -4 -L", "127.0.0.1", AF_INET, true},
      {"-s -c 525600 -i 3600 -n 15 -h ::1 -L", "::1", AF_INET6, true},
  };
  for (const auto& [line, server, family, verbose] : rows) {
    const auto assignment = parse(line);
    ASSERT_TRUE(assignment) << line;
    EXPECT_EQ(assignment->server, server);
    EXPECT_EQ(assignment->family, family);
    EXPECT_EQ(assignment->verbose, verbose);
  }
}

TEST(CommandLine, IsRefusedInAnyOtherForm) {
  const char* const refused[] = {
      "",
      "-s",
      "--help",
      "-s -c 525600 -i 3600 -n 15 -h",
      "-s -c 525600 -i 3600 -n 15 127.0.0.1",
      "-c 525600 -s -i 3600 -n 15 -h 127.0.0.1",
      "-S -c 525600 -i 3600 -n 15 -h 127.0.0.1",
      "-s -c 525601 -i 3600 -n 15 -h 127.0.0.1",
      "-s -c 525600 -i 3601 -n 15 -h 127.0.0.1",
      "-s -c 525600 -i 3600 -n 16 -h 127.0.0.1",
      "-s -c 0525600 -i 3600 -n 15 -h 127.0.0.1",
      "-s -c 525600 -i 3600 -n 15 -h localhost -4",
      "-s -c 525600 -i 3600 -n 15 -h 127.0.0.256 -4",
      "-s -c 525600 -i 3600 -n 15 -h [::1] -6",
      "-s -c 525600 -i 3600 -n 15 -h 127.0.0.1 -6",
      "-s -c 525600 -i 3600 -n 15 -h ::1 -4",
      "-s -c 525600 -i 3600 -n 15 -h ::1 -6 -4",
      "-s -c 525600 -i 3600 -n 15 -h ::1 -L -6",
      "-s -c 525600 -i 3600 -n 15 -h ::1 -6 -L -L",
      "-s -c 525600 -i 3600 -n 15 -h ::1 -6 -l",
      "-s -c 525600 -i 3600 -n 15 -h ::1 -6 -L x",
  };
  for (const char* const line : refused) EXPECT_FALSE(parse(line)) << line;
}

}  // namespace
}  // namespace host::ntp
