#include "base/FormattedText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <string>
#include <utility>
#include <vector>

namespace host {
namespace {

[[gnu::format(printf, 1, 2)]] std::string formatted(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::string text = formattedText(format, arguments);
  va_end(arguments);
  return text;
}

// What the buffer of `size` bytes holds, and the length.
[[gnu::format(printf, 2, 3)]] std::pair<std::string, std::size_t> into(std::size_t size,
                                                                       const char* format, ...) {
  std::vector<char> buffer(size, '#');
  va_list arguments;
  va_start(arguments, format);
  const std::size_t length = formatInto(buffer, format, arguments);
  va_end(arguments);
  return {std::string(buffer.data(), std::min(length, size - 1)), length};
}

TEST(FormattedText, PrintsTheUsualConversions) {
  EXPECT_EQ(formatted("%s", ""), "");
  EXPECT_EQ(formatted("none"), "none");
  EXPECT_EQ(formatted("%d", 0), "0");
  EXPECT_EQ(formatted("%d|%d|%d", INT_MIN, -1, INT_MAX), "-2147483648|-1|2147483647");
  EXPECT_EQ(formatted("%u%u", 0U, UINT_MAX), "04294967295");
  EXPECT_EQ(formatted("%ld %lu.", LONG_MIN, ULONG_MAX),
            std::to_string(LONG_MIN) + ' ' + std::to_string(ULONG_MAX) + '.');
  EXPECT_EQ(formatted("a %s, %d of %s", "text", 5, "\xff\n"), "a text, 5 of \xff\n");
}

TEST(FormattedText, PrintsAllOtherConversionsToo) {
  EXPECT_EQ(formatted("%s: %02d:%5.1f %c %%", "at", 7, 2.25, 'x'), "at: 07:  2.2 x %");
  EXPECT_EQ(formatted("%zu %lld %.3s %x", sizeof(char), -5LL, "abcdef", 255U), "1 -5 abc ff");
  EXPECT_EQ(formatted("%d%%", 50), "50%");
}

TEST(FormattedText, HasAnyLength) {
  for (const std::size_t length : {254U, 255U, 256U, 257U, 5000U}) {
    const std::string text(length, 'x');
    EXPECT_EQ(formatted("%s", text.c_str()), text);
    EXPECT_EQ(formatted("%s%c", text.c_str(), 'y'), text + 'y');
  }
}

TEST(FormattedText, FillsABufferWithTheBeginning) {
  using Result = std::pair<std::string, std::size_t>;
  for (const std::size_t size : {1U, 3U, 8U}) {
    const std::string text = "1234567890";
    EXPECT_EQ(into(size, "%s", text.c_str()), Result(text.substr(0, size - 1), 10));
    EXPECT_EQ(into(size, "%d%s", 12345, "67890"), Result(text.substr(0, size - 1), 10));
    EXPECT_EQ(into(size, "%5d%s", 12345, "67890"), Result(text.substr(0, size - 1), 10));
    EXPECT_EQ(into(size, "12345%d", 67890), Result(text.substr(0, size - 1), 10));
  }
  EXPECT_EQ(into(11, "12345%ld", 67890L), Result("1234567890", 10));
}

}  // namespace
}  // namespace host
