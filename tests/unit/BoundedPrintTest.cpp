#include "BoundedPrint.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace {

TEST(BoundedPrint, TextThatFitsIsWhole) {
  std::array<char, 8> buffer{};
  boundedPrint(buffer, "%02d:%02d", 7, 5);
  EXPECT_STREQ(buffer.data(), "07:05");
}

TEST(BoundedPrint, LastByteIsTheTerminator) {
  std::array<char, 6> buffer{};
  boundedPrint(buffer, "%s", "12345");
  EXPECT_STREQ(buffer.data(), "12345");
  boundedPrint(buffer, "%s", "123456");
  EXPECT_STREQ(buffer.data(), "12345");
  boundedPrint(buffer, "%s", std::string(5000, 'x').c_str());
  EXPECT_STREQ(buffer.data(), "xxxxx");
}

TEST(BoundedPrint, ShorterTextReplacesALongerOne) {
  std::array<char, 6> buffer{};
  boundedPrint(buffer, "%s", "12345");
  boundedPrint(buffer, "%d", 6);
  EXPECT_STREQ(buffer.data(), "6");
}

TEST(BoundedPrint, SmallestBufferHoldsNothing) {
  std::array<char, 1> buffer{{'x'}};
  boundedPrint(buffer, "%d", 42);
  EXPECT_STREQ(buffer.data(), "");
}

}  // namespace
