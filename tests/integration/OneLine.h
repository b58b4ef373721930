#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "integration/Programs.h"

namespace integration {

// Expects an outcome with one line of standard error, which has all these parts.
inline void expectOneLine(const Outcome& outcome, int status, const Words& parts) {
  EXPECT_EQ(outcome.status, status) << outcome.err;
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
  for (const std::string& part : parts) {
    EXPECT_NE(outcome.err.find(part), std::string::npos) << part << ": " << outcome.err;
  }
}

}  // namespace integration
