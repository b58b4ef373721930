#include "DSTZoneRules.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstddef>
#include <string>

#include "support/UtcInstant.h"
#include "support/ZoneGuard.h"

namespace {

struct Zone {
  int id;
  const char* name;
  const char* rule;
};

// A second copy of the table: stored settings and lists that users know depend on its order.
constexpr std::array<Zone, 15> kZones{{
    {0, "Not Set", ""},
    {1, "Australia 2007 (ACT, South Australia, Tasmania, Victoria)", "M10.5.0/02:00,M4.1.0/03:00"},
    {2, "Australia 2007 (New South Wales)", "M10.5.0/02:00,M3.5.0/03:00"},
    {3, "Australia (Western Australia)", "M10.5.0/02:00,M3.5.0/03:00"},
    {4, "Australia 2008+ (ACT, New South Wales, South Australia, Tasmania, Victoria)",
     "M10.1.0/02:00,M4.1.0/03:00"},
    {5, "Brazil", "M10.3.0/00:00,M2.3.0/00:00"},
    {6, "Canada", "M3.2.0/02:00,M11.1.0/02:00"},
    {7, "Canada (Newfoundland)", "M3.2.0/00:00,M11.1.0/00:00"},
    {8, "Europe (Portugal, United Kingdom)", "M3.5.0/01:00,M10.5.0/02:00"},
    {9,
     "Europe (Austria, Belgium, Croatia, Denmark, France, Germany, Hungary, Italy, Luxembourg, "
     "Netherlands, Norway, Poland, Slovakia, Spain, Sweden, Switzerland)",
     "M3.5.0/02:00,M10.5.0/03:00"},
    {10, "Europe (Finland)", "M3.5.0/03:00,M10.5.0/04:00"},
    {11, "Mexico", "M4.1.0/02:00,M10.5.0/02:00"},
    {12, "United States", "M3.2.0/02:00,M11.1.0/02:00"},
    {13, "New Zealand", "M9.5.0/02:00,M4.1.0/03:00"},
    {14, "New Zealand (Chatham)", "M9.5.0/02:45,M4.1.0/03:45"},
}};

constexpr std::array<int, 8> kUnknown{-1, 15, 16, 99, 255, -15, INT_MAX, INT_MIN};

TEST(DSTZoneRules, EveryRowHasItsIdentifierNameAndRule) {
  const DSTZoneRules rules;
  for (std::size_t row = 0; row < kZones.size(); ++row) {
    const Zone& zone = kZones[row];
    std::string name = "old";
    std::string rule = "old";
    rules.getDSTZoneName(zone.id, name);
    rules.getDSTZoneRule(zone.id, rule);
    EXPECT_EQ(name, zone.name) << "zone " << zone.id;
    EXPECT_EQ(rule, zone.rule) << "zone " << zone.id;
    EXPECT_EQ(rules.getDSTZoneListIndex(zone.id), static_cast<int>(row)) << "zone " << zone.id;
    EXPECT_EQ(rules.getDSTZoneId(static_cast<int>(row)), zone.id) << "row " << row;
  }
}

TEST(DSTZoneRules, ListHasEveryNameInOrderFollowedByASemicolon) {
  std::string expected;
  for (const Zone& zone : kZones) expected += zone.name + std::string(";");
  std::string list = "old";
  DSTZoneRules().getDSTZoneList(list);
  EXPECT_EQ(list, expected);
}

TEST(DSTZoneRules, UnknownIdentifierOrRowHasNothing) {
  const DSTZoneRules rules;
  for (const int unknown : kUnknown) {
    EXPECT_EQ(rules.getDSTZoneListIndex(unknown), -1) << "zone " << unknown;
    EXPECT_EQ(rules.getDSTZoneId(unknown), -1) << "row " << unknown;
    std::string name = "old";
    std::string rule = "old";
    rules.getDSTZoneName(unknown, name);
    rules.getDSTZoneRule(unknown, rule);
    EXPECT_EQ(name + rule, "") << "zone " << unknown;
  }
}

bool isDaylight(time_t instant) {
  tm local{};
  localtime_r(&instant, &local);
  return local.tm_isdst > 0;
}

// Under each rule, exactly one of January and July has daylight saving.
TEST(DSTZoneRules, CLibraryAcceptsEveryRule) {
  const DSTZoneRules rules;
  for (const Zone& zone : kZones) {
    if (*zone.rule == '\0') continue;
    std::string rule;
    rules.getDSTZoneRule(zone.id, rule);
    const support::ZoneGuard guard("LOC-1:00DST-2:00," + rule);
    EXPECT_NE(isDaylight(support::utcInstant(2026, 1, 1)),
              isDaylight(support::utcInstant(2026, 7, 1)))
        << "zone " << zone.id << ", " << rule;
  }
}

}  // namespace
