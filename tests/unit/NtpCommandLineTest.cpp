#include "ClockService/NtpCommandLine.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <string>

namespace {

// All entries as text. A process launch reads up to the first null entry, so the text "NULL" must
// stand for exactly those.
std::string textOf(const NtpCommandLine& line) {
  std::string text;
  for (std::size_t i = 0; i < NtpCommandLine::kEntries; ++i) {
    const std::string entry = line.textAt(i);
    EXPECT_EQ(entry == "NULL", line.arguments()[i] == nullptr) << "entry " << i;
    text += (i > 0 ? " " : "") + entry;
  }
  return text;
}

TEST(NtpCommandLine, FollowsKindOfAddressAndTrace) {
  const struct {
    const char* address;
    int kind;
    bool traced;
    const char* end;
  } table[] = {
      {"192.0.2.1", 2, false, "192.0.2.1 -4 NULL NULL"},
      {"192.0.2.1", 2, true, "192.0.2.1 -4 -L NULL"},
      {"2001:db8::1", 1, false, "2001:db8::1 -6 NULL NULL"},
      {"2001:db8::1", 1, true, "2001:db8::1 -6 -L NULL"},
      {"odd", 0, false, "odd NULL NULL NULL"},
      {"odd", 0, true, "odd -L NULL NULL"},
      {"odd", 3, false, "odd NULL NULL NULL"},
      {"odd", -1, true, "odd -L NULL NULL"},
      {"odd", INT_MAX, false, "odd NULL NULL NULL"},
  };
  for (const auto& row : table) {
    EXPECT_EQ(textOf(NtpCommandLine(row.address, row.kind, row.traced)),
              std::string("sbin/ntpclient -s -c 525600 -i 3600 -n 15 -h ") + row.end)
        << row.address << ", kind " << row.kind << ", traced " << row.traced;
  }
}

}  // namespace
