// What the clock shows from 1971 to 2037, against the independent reading of the rules: for each
// zone and each of the offsets, at every change, one second before, one after, and at random.

#include <gtest/gtest.h>

#include "plugin/CenturyClock.h"

namespace {

using independent::Choice;
using independent::Seconds;
using independent::WallClock;
using plugin::kFirstYear;
using plugin::kLastYear;
using plugin::kOffsets;
using plugin::nameOf;

constexpr int kRandomInstants = 60;

class ClockOverACentury : public plugin::CenturyClock {
 protected:
  // All of the display at one instant; false ends the test at the first difference.
  bool agrees(const WallClock& expected, Seconds instant) {
    telephone.jumpTo(instant);
    ClockService& service = telephone.service();
    const std::string face = expected.faceAt(instant);
    const std::string textFace = expected.faceForText(instant);
    const std::string text = independent::utcOf(instant) + "+00:00";
    int hours = 0, minutes = 0, seconds = 0;
    service.getTime(hours, minutes, seconds);
    const bool same =
        service.getDate() == face.substr(2, 8) && service.getTime() == face.substr(11, 5) &&
        seconds == std::stoi(face.substr(17)) && service.getDate(text) == textFace.substr(2, 8) &&
        service.getTime(text) == textFace.substr(11, 5) &&
        service.getDisplayTimeVal() == expected.localAt(instant);
    EXPECT_TRUE(same) << "at " << text << " the clock shows " << service.getDate() << " "
                      << service.getTime() << " instead of " << face << ", and for the text "
                      << service.getDate(text) << " " << service.getTime(text) << " instead of "
                      << textFace;
    return same;
  }

  bool agreesEverywhere(const Choice& choice) {
    SCOPED_TRACE(nameOf(choice));
    choose(choice);
    const WallClock expected(choice);
    for (std::int64_t year = kFirstYear; year <= kLastYear; ++year)
      for (const Seconds change : expected.changesIn(year))
        for (const Seconds instant : {change - 1, change, change + 1})
          if (!agrees(expected, instant)) return false;
    for (int i = 0; i < kRandomInstants; ++i)
      if (!agrees(expected, randomInstant())) return false;
    return true;
  }
};

TEST_P(ClockOverACentury, ShowsTheLocalTimeByTheZonesRule) {
  for (const int offset : kOffsets)
    if (!agreesEverywhere({zone(), offset, true, true})) break;
}

TEST_P(ClockOverACentury, ShowsTheLocalTimePutForwardByHand) {
  for (const int offset : kOffsets)
    if (!agreesEverywhere({zone(), offset, true, false})) break;
}

TEST_P(ClockOverACentury, ShowsStandardTimeWithoutDaylightSaving) {
  for (const int offset : kOffsets)
    if (!agreesEverywhere({zone(), offset, false, true})) break;
}

TEST_P(ClockOverACentury, ShowsTheLocalTimeWithOtherShifts) {
  for (const int shift : {30, 90, 120})
    for (const int offset : {-210, 0, 60, 570})
      if (!agreesEverywhere({zone(), offset, true, true, shift})) return;
}

INSTANTIATE_TEST_SUITE_P(Zones, ClockOverACentury, testing::Range(0, 15));

}  // namespace
