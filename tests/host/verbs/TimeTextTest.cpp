#include "verbs/TimeText.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/ZoneGuard.h"

namespace host {
namespace {

using std::chrono::seconds;

TEST(TimeText, AcceptsEachFormOfADuration) {
  const std::pair<const char*, std::int64_t> accepted[] = {
      {"0s", 0},
      {"90s", 90},
      {"15m", 900},
      {"2h", 7200},
      {"1d", 86400},
      {"36525d", 3155760000},
      {"00:00:00", 0},
      {"00:30:00", 1800},
      {"23:59:59", 86399},
      {"99:59:59", 359999},
      {"1h30m", 5400},
      {"1d2h3m4s", 93784},
      {"1d1s", 86401},
      {"90m90s", 5490},
      {"36524d24h", 3155760000},
      {"36525d0s", 3155760000},
      {"0001s", 1},
      {"3155760000s", 3155760000},
  };
  for (const auto& [text, expected] : accepted) {
    EXPECT_EQ(parseDuration(text), seconds(expected)) << text;
  }
}

TEST(TimeText, AnExactDurationHasAFraction) {
  using std::chrono::microseconds;
  for (const auto& [text, expected] :
       {std::pair{"0.0s", 0}, {"2.5s", 2'500'000}, {"0.000001s", 1}, {"1.000250s", 1'000'250}}) {
    EXPECT_EQ(parseExactDuration(text), microseconds(expected)) << text;
  }
  for (const char* const text : {"", "s", ".5s", "2.s", "2s", "2.5", "2.1234567s", "-1.5s", "1.-5s",
                                 "1.5.5s", "3155760000.0s"}) {
    EXPECT_EQ(parseExactDuration(text), std::nullopt) << text;
  }
  EXPECT_EQ(exactDurationText(microseconds(0)), "0.0s");
  EXPECT_EQ(exactDurationText(microseconds(3'000'000)), "3.0s");
  EXPECT_EQ(exactDurationText(microseconds(1'000'250)), "1.00025s");
}

TEST(TimeText, RealTimeToWaitIsAMillisecondOrMore) {
  using std::chrono::milliseconds;
  const std::pair<const char*, std::int64_t> accepted[] = {
      {"1s", 1000}, {"0.5s", 500}, {"0.000001s", 1}, {"1.0011s", 1002}, {"1h30m", 5'400'000}};
  for (const auto& [text, expected] : accepted) {
    EXPECT_EQ(parseRealDuration(text), milliseconds(expected)) << text;
  }
  for (const char* const text : {"", "0s", "0.0s", "00:00:00", "5", "-1s", "1.5m"}) {
    EXPECT_EQ(parseRealDuration(text), std::nullopt) << text;
  }
  EXPECT_EQ(secondsText(milliseconds(50)), "0.05 s");
  EXPECT_EQ(secondsText(milliseconds(86'400'001)), "86400.001 s");
}

TEST(TimeText, LocalInstantHasItsOffset) {
  const seconds instant(1'772'953'200);
  EXPECT_EQ(localInstantText(instant, seconds(-18000)), "2026-03-08T02:00:00-05:00");
  EXPECT_EQ(localInstantText(instant, seconds(20700)), "2026-03-08T12:45:00+05:45");
  EXPECT_EQ(localInstantText(instant, seconds(0)), "2026-03-08T07:00:00+00:00");
}

TEST(TimeText, RejectsDurationsOneStepOutside) {
  for (const char* const text : {"",
                                 "s",
                                 "90",
                                 "3 parsecs",
                                 "90 s",
                                 " 90s",
                                 "90s ",
                                 "-1s",
                                 "+1s",
                                 "1.5h",
                                 "1w",
                                 "1h30",
                                 "h30m",
                                 "30m1h",
                                 "1h1h",
                                 "1h 30m",
                                 "1h-30m",
                                 "36525d1s",
                                 "36524d25h",
                                 "1h00:30:00",
                                 "36526d",
                                 "3155760001s",
                                 "99999999999999999999s",
                                 "00:60:00",
                                 "00:00:60",
                                 "0:30:00",
                                 "000:30:00",
                                 "00:30",
                                 "00:30:00s",
                                 "0x10s",
                                 "00-30-00"}) {
    EXPECT_EQ(parseDuration(text), std::nullopt) << text;
  }
}

TEST(TimeText, AcceptsEachFormOfAnInstant) {
  const std::pair<const char*, std::int64_t> accepted[] = {
      {"1970-01-01T00:00:00Z", 0},
      {"2026-03-08T06:59:50Z", 1772953190},
      {"2026-03-08T06:59:50+00:00", 1772953190},
      {"2026-03-08T06:59:50-00:00", 1772953190},
      {"2026-03-08T07:59:50+01:00", 1772953190},
      {"2026-03-08T01:59:50-05:00", 1772953190},
      {"2024-02-29T00:00:00Z", 1709164800},
      {"2038-01-19T03:14:07Z", 2147483647},
      {"2199-12-31T23:59:59Z", kLastInstant.count()},
      {"1970-01-01T23:59:00+23:59", 0},
  };
  for (const auto& [text, expected] : accepted) {
    EXPECT_EQ(parseInstant(text), seconds(expected)) << text;
  }
}

TEST(TimeText, RejectsInstantsOneStepOutside) {
  for (const char* const text : {"",
                                 "2026-03-08",
                                 "2026-03-08T06:59:50",
                                 "2026-03-08 06:59:50Z",
                                 "2026-03-08T06:59:50z",
                                 "2026-03-08T06:59:50Z ",
                                 " 2026-03-08T06:59:50Z",
                                 "2026-00-08T06:59:50Z",
                                 "2026-13-08T06:59:50Z",
                                 "2026-02-29T00:00:00Z",
                                 "2026-04-31T00:00:00Z",
                                 "2026-03-00T00:00:00Z",
                                 "2026-03-08T24:00:00Z",
                                 "2026-03-08T06:60:50Z",
                                 "2026-03-08T06:59:60Z",
                                 "2026-03-08T06:59:50+24:00",
                                 "2026-03-08T06:59:50+00:60",
                                 "2026-03-08T06:59:50+0000",
                                 "1969-12-31T23:59:59Z",
                                 "1970-01-01T00:00:00+00:01",
                                 "2200-01-01T00:00:00Z",
                                 "2026-3-8T06:59:50Z"}) {
    EXPECT_EQ(parseInstant(text), std::nullopt) << text;
  }
}

TEST(TimeText, AcceptsAndRejectsSpeeds) {
  for (const auto& [text, expected] :
       {std::pair("0", 0.0), std::pair("1", 1.0), std::pair("0.5", 0.5), std::pair("3600", 3600.0),
        std::pair("1000000000", 1e9)}) {
    EXPECT_EQ(parseSpeed(text), expected) << text;
  }
  EXPECT_TRUE(std::isinf(parseSpeed("max").value_or(0)));
  for (const char* const text : {"", "-1", "-0", "nan", "inf", "fast", "1x", " 1", "1000000001"}) {
    EXPECT_EQ(parseSpeed(text), std::nullopt) << text;
  }
}

TEST(TimeText, PrintsSpeeds) {
  EXPECT_EQ(speedText(0), "paused");
  EXPECT_EQ(speedText(1), "1");
  EXPECT_EQ(speedText(0.5), "0.5");
  EXPECT_EQ(speedText(HUGE_VAL), "max");
}

TEST(TimeText, PrintsInstantsInBothForms) {
  EXPECT_EQ(instantText(seconds(1772953190)), "2026-03-08T06:59:50Z");
  EXPECT_EQ(longInstantText(seconds(1772953190)), "2026-03-08T06:59:50+00:00");
}

TEST(TimeText, PrintsLocalTimeWithItsZone) {
  const support::ZoneGuard zone("LOC05:00DST04:00,M3.2.0/02:00,M11.1.0/02:00");
  EXPECT_EQ(localText(1772953199), "2026-03-08 01:59:59 (LOC, UTC-05:00)");
  EXPECT_EQ(localText(1772953200), "2026-03-08 03:00:00 (DST, UTC-04:00)");
}

TEST(TimeText, ALocalTimeHasNoneOneOrTwoInstants) {
  const auto instants = [](const char* local) {
    std::string texts;
    for (const seconds instant : instantsOfLocal(parseLocal(local).value())) {
      texts += (texts.empty() ? "" : " ") + instantText(instant);
    }
    return texts;
  };
  {
    const support::ZoneGuard zone("LOC05:00DST04:00,M3.2.0/02:00,M11.1.0/02:00");
    EXPECT_EQ(instants("2026-03-08 01:59:59"), "2026-03-08T06:59:59Z");
    EXPECT_EQ(instants("2026-03-08 02:00:00"), "");
    EXPECT_EQ(instants("2026-03-08 02:59:59"), "");
    EXPECT_EQ(instants("2026-03-08 03:00:00"), "2026-03-08T07:00:00Z");
    EXPECT_EQ(instants("2026-11-01 00:59:59"), "2026-11-01T04:59:59Z");
    EXPECT_EQ(instants("2026-11-01 01:00:00"), "2026-11-01T05:00:00Z 2026-11-01T06:00:00Z");
    EXPECT_EQ(instants("2026-11-01 01:59:59"), "2026-11-01T05:59:59Z 2026-11-01T06:59:59Z");
    EXPECT_EQ(instants("2026-11-01 02:00:00"), "2026-11-01T07:00:00Z");
  }
  {
    // Chatham, in the south
    const support::ZoneGuard zone("LOC-12:45DST-13:45,M9.5.0/02:45,M4.1.0/03:45");
    EXPECT_EQ(instants("2026-04-05 02:44:59"), "2026-04-04T12:59:59Z");
    EXPECT_EQ(instants("2026-04-05 02:45:00"), "2026-04-04T13:00:00Z 2026-04-04T14:00:00Z");
    EXPECT_EQ(instants("2026-09-27 02:45:00"), "");
    EXPECT_EQ(instants("2026-09-27 03:45:00"), "2026-09-26T14:00:00Z");
  }
}

TEST(TimeText, RejectsLocalTimesOneStepOutside) {
  EXPECT_EQ(parseLocal("1970-01-01 00:00:00"), seconds(0));
  EXPECT_EQ(parseLocal("2199-12-31 23:59:59"), kLastInstant);
  for (const char* const text :
       {"", "2026-03-08", "2026-03-08 01:59", "2026-03-08T01:59:50", "2026-03-08  1:59:50",
        "2026-03-08 01:59:50Z", "2026-03-08 01:59:60", "2026-02-29 01:59:50", "1969-12-31 23:59:59",
        "2200-01-01 00:00:00", "2026-03-08\n01:59:50"}) {
    EXPECT_EQ(parseLocal(text), std::nullopt) << text;
  }
}

TEST(TimeText, PrintsDaysOnlyOfLongDurations) {
  EXPECT_EQ(durationText(seconds(0)), "00:00:00");
  EXPECT_EQ(durationText(seconds(86399)), "23:59:59");
  EXPECT_EQ(durationText(seconds(86400 + 3723)), "1d 01:02:03");
}

}  // namespace
}  // namespace host
