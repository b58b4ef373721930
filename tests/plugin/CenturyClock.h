#pragma once

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <vector>

#include "plugin/IndependentZones.h"
#include "plugin/Telephone.h"

namespace plugin {

constexpr std::int64_t kFirstYear = 1971;
constexpr std::int64_t kLastYear = 2037;

// Minutes east of UTC: from one end of the range to the other, with halves and quarters of an hour.
constexpr std::array<int, 27> kOffsets{-750, -660, -570, -480, -300, -270, -210, -180, -60,
                                       -45,  -30,  -15,  0,    15,   30,   45,   60,   120,
                                       180,  330,  345,  525,  570,  600,  630,  720,  750};

// A running clock for one zone of the table, the zone's number being the parameter. It has no
// storage for its script, which would be the slowest part of it all.
class CenturyClock : public testing::TestWithParam<int> {
 protected:
  CenturyClock();
  ~CenturyClock() override;
  CenturyClock(const CenturyClock&) = delete;
  CenturyClock& operator=(const CenturyClock&) = delete;

  [[nodiscard]] static int zone() { return GetParam(); }
  // The settings of the choice are in force when it returns.
  void choose(const independent::Choice& choice);
  // An instant between the first and the last year; the same row of them in each run.
  independent::Seconds randomInstant();

  Telephone telephone;

 private:
  const std::string m_storage;
  std::mt19937_64 m_random{20260308};
};

// "zone 9 at +60, automatic": for messages of failed tests.
std::string nameOf(const independent::Choice& choice);

}  // namespace plugin
