#include "verbs/Landmarks.h"

#include <gtest/gtest.h>

#include "support/ZoneGuard.h"
#include "verbs/Choices.h"
#include "verbs/NamedRows.h"
#include "verbs/TimeText.h"
#include "verbs/VerbTable.h"

namespace host {
namespace {

constexpr const char* kNewYork = "LOC05:00DST04:00,M3.2.0/02:00,M11.1.0/02:00";
constexpr const char* kBrazil = "LOC03:00DST02:00,M10.3.0/00:00,M2.3.0/00:00";
constexpr const char* kChatham = "LOC-12:45DST-13:45,M9.5.0/02:45,M4.1.0/03:45";

std::string next(const char* name, const char* zone, const char* now) {
  const support::ZoneGuard guard(zone);
  const Landmark& landmark = *rowNamed(landmarks(), name);
  const auto instant = nextLandmark(landmark, parseInstant(now).value().count());
  return instant ? instantText(std::chrono::seconds(*instant)) : "none";
}

TEST(Landmarks, NextFullHourIsALocalOne) {
  EXPECT_EQ(next("hour", "UTC0", "2026-03-08T06:30:00Z"), "2026-03-08T07:00:00Z");
  EXPECT_EQ(next("hour", "LOC-5:30", "2026-03-08T06:30:00Z"), "2026-03-08T07:30:00Z");
  EXPECT_EQ(next("hour", kChatham, "2026-01-08T06:00:00Z"), "2026-01-08T06:15:00Z");
}

TEST(Landmarks, AnHourTenSecondsAheadIsSkipped) {
  EXPECT_EQ(next("hour", "UTC0", "2026-03-08T06:59:49Z"), "2026-03-08T07:00:00Z");
  EXPECT_EQ(next("hour", "UTC0", "2026-03-08T06:59:50Z"), "2026-03-08T08:00:00Z");
}

TEST(Landmarks, MidnightIsWhereTheDateBegins) {
  EXPECT_EQ(next("midnight", "LOC05:00", "2026-03-08T06:00:00Z"), "2026-03-09T05:00:00Z");
  EXPECT_EQ(next("midnight", "UTC0", "2026-12-31T12:00:00Z"), "2027-01-01T00:00:00Z");
}

TEST(Landmarks, MidnightInAZoneThatChangesAtMidnight) {
  // Forward: 18 October 2026 begins at 01:00. Back: 14 February ends with a second 23:00.
  EXPECT_EQ(next("midnight", kBrazil, "2026-10-18T02:00:00Z"), "2026-10-18T03:00:00Z");
  EXPECT_EQ(next("midnight", kBrazil, "2026-02-15T01:30:00Z"), "2026-02-15T03:00:00Z");
}

TEST(Landmarks, BothChangesOfDaylightSaving) {
  EXPECT_EQ(next("dst", kNewYork, "2026-01-01T00:00:00Z"), "2026-03-08T07:00:00Z");
  EXPECT_EQ(next("dst", kNewYork, "2026-03-08T07:00:00Z"), "2026-11-01T06:00:00Z");
  EXPECT_EQ(next("dst", kChatham, "2026-01-01T00:00:00Z"), "2026-04-04T14:00:00Z");
}

TEST(Landmarks, NoDaylightSavingNoChange) {
  EXPECT_EQ(next("dst", "LOC-1:00", "2026-01-01T00:00:00Z"), "none");
}

TEST(Landmarks, LeapDays) {
  EXPECT_EQ(next("leap-day", "UTC0", "2026-01-01T00:00:00Z"), "2028-02-29T00:00:00Z");
  EXPECT_EQ(next("leap-day", "LOC05:00", "2028-02-29T04:59:49Z"), "2028-02-29T05:00:00Z");
  EXPECT_EQ(next("leap-day", "LOC05:00", "2028-02-29T04:59:50Z"), "2032-02-29T05:00:00Z");
  EXPECT_EQ(next("leap-day", "UTC0", "2096-03-01T00:00:00Z"), "2104-02-29T00:00:00Z");
}

TEST(Landmarks, TheEndOf32BitTimeComesOnce) {
  EXPECT_EQ(next("2038", "UTC0", "2026-01-01T00:00:00Z"), "2038-01-19T03:14:07Z");
  EXPECT_EQ(next("2038", "UTC0", "2038-01-19T03:13:57Z"), "none");
}

TEST(Landmarks, AreListedForARefusal) {
  EXPECT_EQ(alternatives(namesOf(landmarks())), "hour, midnight, dst, leap-day or 2038");
}

TEST(Landmarks, TheCommandLineTakesEachOfThem) {
  std::string names;
  for (const Landmark& landmark : landmarks()) {
    names += (names.empty() ? "" : "|") + std::string(landmark.name);
  }
  EXPECT_EQ(rowNamed(kClockActions, "to")->words[0].usage, names);
}

}  // namespace
}  // namespace host
