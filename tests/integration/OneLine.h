#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "integration/Programs.h"

namespace integration {

// Expects nothing but one short, printable line on standard error that has all these parts.
inline void expectOneLine(const Outcome& outcome, int status, const Words& parts) {
  constexpr std::ptrdiff_t kLongestLine = 1200;  // bytes
  const auto isPrintable = [](char byte) { return byte >= ' ' && byte != '\x7F'; };
  EXPECT_EQ(outcome.status, status) << outcome.err;
  EXPECT_EQ(outcome.out, "");
  EXPECT_TRUE(outcome.err.ends_with('\n')) << outcome.err;
  const auto end = std::find_if_not(outcome.err.begin(), outcome.err.end(), isPrintable);
  EXPECT_EQ(outcome.err.end() - end, 1) << testing::PrintToString(outcome.err);
  EXPECT_LE(end - outcome.err.begin(), kLongestLine);
  for (const std::string& part : parts) {
    EXPECT_NE(outcome.err.find(part), std::string::npos) << part << ": " << outcome.err;
  }
}

}  // namespace integration
