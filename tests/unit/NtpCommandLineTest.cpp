#include "ClockService/NtpCommandLine.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <string>

#include "DevicePaths.h"

namespace {

// The arguments up to the terminator, after the program.
std::string optionsOf(const NtpCommandLine& line) {
  std::string text;
  for (std::size_t i = 1; i < NtpCommandLine::kEntries && line.arguments()[i] != nullptr; ++i)
    text += (i > 1 ? " " : "") + std::string(line.arguments()[i]);
  return text;
}

TEST(NtpCommandLine, BeginsWithTheProgram) {
  const NtpCommandLine line("192.0.2.1", 2, false);
  EXPECT_EQ(line.arguments()[0], DevicePaths::kNtpClientProgram);
}

TEST(NtpCommandLine, FollowsKindOfAddressAndTrace) {
  const struct {
    const char* address;
    int kind;
    bool traced;
    const char* options;
  } table[] = {
      {"192.0.2.1", 2, false, "-s -c 525600 -i 3600 -n 15 -h 192.0.2.1 -4"},
      {"192.0.2.1", 2, true, "-s -c 525600 -i 3600 -n 15 -h 192.0.2.1 -4 -L"},
      {"2001:db8::1", 1, false, "-s -c 525600 -i 3600 -n 15 -h 2001:db8::1 -6"},
      {"2001:db8::1", 1, true, "-s -c 525600 -i 3600 -n 15 -h 2001:db8::1 -6 -L"},
      {"odd", 0, false, "-s -c 525600 -i 3600 -n 15 -h odd"},
      {"odd", 0, true, "-s -c 525600 -i 3600 -n 15 -h odd -L"},
      {"odd", 3, false, "-s -c 525600 -i 3600 -n 15 -h odd"},
      {"odd", -1, true, "-s -c 525600 -i 3600 -n 15 -h odd -L"},
      {"odd", INT_MAX, false, "-s -c 525600 -i 3600 -n 15 -h odd"},
  };
  for (const auto& row : table)
    EXPECT_EQ(optionsOf(NtpCommandLine(row.address, row.kind, row.traced)), row.options)
        << row.address << ", kind " << row.kind << ", traced " << row.traced;
}

// A process launch reads up to the first null; the rest of the array is null as well.
TEST(NtpCommandLine, IsNullTerminated) {
  for (const int kind : {0, 1, 2})
    for (const bool traced : {false, true}) {
      const NtpCommandLine line("192.0.2.1", kind, traced);
      const std::size_t given = 10U + (kind != 0 ? 1U : 0U) + (traced ? 1U : 0U);
      for (std::size_t i = 0; i < NtpCommandLine::kEntries; ++i)
        EXPECT_EQ(line.arguments()[i] != nullptr, i < given)
            << "entry " << i << ", kind " << kind << ", traced " << traced;
    }
}

TEST(NtpCommandLine, TextOfAMissingEntryIsNull) {
  const NtpCommandLine line("192.0.2.1", 2, true);
  EXPECT_STREQ(line.textAt(0), DevicePaths::kNtpClientProgram);
  EXPECT_STREQ(line.textAt(9), "192.0.2.1");
  EXPECT_STREQ(line.textAt(10), "-4");
  EXPECT_STREQ(line.textAt(11), "-L");
  EXPECT_STREQ(line.textAt(12), "NULL");
  EXPECT_STREQ(NtpCommandLine("192.0.2.1", 0, false).textAt(10), "NULL");
}

}  // namespace
