#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/LogCapture.h"
#include "support/Telephone.h"

namespace plugin {

// A running, managed clock in UTC, at 09:07:05 on 5 March 2024.
class ManagedClock : public testing::Test {
 protected:
  explicit ManagedClock(int logLevel = 5) : log(logLevel) {
    telephone.store("FallbackDateTime", "2024-03-05T09:07:05+00:00");
    telephone.switchOn();
  }
  std::string utc() { return telephone.service().getUTCTime(0); }

  support::Telephone telephone;
  support::LogCapture log;
};

}  // namespace plugin
