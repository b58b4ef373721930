// The zone that the settings describe: the process's TZ, the script, the event, and what is added
// to a UTC string.

#include <gmock/gmock.h>

#include <climits>
#include <cstdlib>
#include <ios>

#include "Storage.h"
#include "support/Telephone.h"

namespace {

std::string g_storage;  // name and modes of the storage opened last

}  // namespace

// The linker replaces Storage::init with this. NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
using Mode = std::ios_base::openmode;
bool __real__ZN7Storage4initEPKcSt13_Ios_OpenmodeS2_(Storage*, const char*, Mode, Mode);
bool __wrap__ZN7Storage4initEPKcSt13_Ios_OpenmodeS2_(Storage*, const char*, Mode, Mode);

bool __wrap__ZN7Storage4initEPKcSt13_Ios_OpenmodeS2_(Storage* storage, const char* name,
                                                     Mode readMode, Mode writeMode) {
  const bool binary = readMode == (std::ios_base::in | std::ios_base::binary) &&
                      writeMode == (std::ios_base::out | std::ios_base::binary);
  g_storage = name + std::string(binary ? ", binary" : ", another mode");
  return __real__ZN7Storage4initEPKcSt13_Ios_OpenmodeS2_(storage, name, readMode, writeMode);
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

using testing::ElementsAre;

// A telephone that is not switched on yet.
class ClockAboutToStart : public testing::Test {
 protected:
  static std::string tz() {
    const char* const value = std::getenv("TZ");  // NOLINT(concurrency-mt-unsafe)
    return value != nullptr ? value : "(none)";
  }
  // The minutes that are added to a UTC string outside daylight saving.
  int displayMinutes(bool south = false) {
    const std::string noon = south ? "2024-07-15T12:00:00+00:00" : "2024-01-15T12:00:00+00:00";
    int hours = 0, minutes = 0, seconds = 0, day = 0, month = 0, year = 0;
    EXPECT_TRUE(telephone.service().getTime(noon, hours, minutes, seconds));
    EXPECT_TRUE(telephone.service().getDate(noon, day, month, year));
    return (day - 15) * 24 * 60 + (hours - 12) * 60 + minutes;
  }

  support::Telephone telephone;
};

struct Row {
  const char* offset;
  bool daylight;
  const char* minutes;
  bool automatic;
  int zone;
  const char* tz;
  int displayMinutes;
};

const Row kRows[] = {
    {"1", false, "60", false, 0, "LOC-1:00", 60},
    {"1", true, "60", true, 9, "LOC-1:00DST-2:00,M3.5.0/02:00,M10.5.0/03:00", 60},
    {"0", true, "30", false, 0, "LOC-00:30", 30},
    {"-5", true, "60", true, 12, "LOC05:00DST04:00,M3.2.0/02:00,M11.1.0/02:00", -300},
    // under an hour without daylight saving, the sign is lost
    {"-0.5", false, "60", false, 0, "LOC00:30", -30},
    {"-0.5", true, "60", true, 8, "LOC00:30DST-00:30,M3.5.0/01:00,M10.5.0/02:00", -30},
    {"12.5", true, "60", true, 14, "LOC-12:30DST-13:30,M9.5.0/02:45,M4.1.0/03:45", 750},
    {"-12.5", true, "60", true, 5, "LOC12:30DST11:30,M10.3.0/00:00,M2.3.0/00:00", -750},
    // no rule, or no such zone: daylight saving all year
    {"1", true, "60", true, 0, "LOC-2:00", 120},
    {"1", false, "60", true, 9, "LOC-1:00", 60},
    {"1", true, "-60", false, 0, "LOC00:00", 0},
    {"-3.5", true, "60", true, 7, "LOC03:30DST02:30,M3.2.0/00:00,M11.1.0/00:00", -210},
};

bool isSouthern(int zone) {
  return (zone >= 1 && zone <= 5) || zone >= 13;
}

TEST_F(ClockAboutToStart, ReadsItsZoneFromTheSettingsWhateverTheEnvironmentHolds) {
  for (const Row& row : kRows) {
    const support::ZoneGuard environment("LOC07:15");
    telephone.storeZone(row.offset, row.daylight, row.automatic, row.zone);
    telephone.store("DaylightSavingMinutes", row.minutes);
    telephone.switchOn();
    EXPECT_EQ(tz(), row.tz);
    EXPECT_EQ(telephone.wallText(), "2016-06-16T00:00:00");  // the saved time, which is UTC
    EXPECT_EQ(displayMinutes(isSouthern(row.zone)), row.displayMinutes) << row.tz;
    EXPECT_EQ(support::zoneScript(), std::string("#!/bin/sh\n\nexport TZ=") + row.tz + "\n\n");
    EXPECT_THAT(telephone.events.take(), ElementsAre(std::string("zone ") + row.tz));
    telephone.switchOff();
  }
}

TEST_F(ClockAboutToStart, AppliesDaylightSavingAllYearForAnUnknownZone) {
  for (const int zone : {15, -1, 99, INT_MAX, INT_MIN}) {
    telephone.storeZone("1", true, true, zone);
    telephone.switchOn();
    EXPECT_EQ(tz(), "LOC-2:00") << zone;
    telephone.switchOff();
  }
}

// A running clock in UTC.
class ClockWithChangingZone : public ClockAboutToStart {
 protected:
  ClockWithChangingZone() {
    telephone.switchOn();
    telephone.events.take();
  }
};

TEST_F(ClockWithChangingZone, FollowsEachChangeOfTheSettings) {
  for (const Row& row : kRows) {
    telephone.changeZone("sntp-tz-offset", row.offset);
    telephone.changeZone("daylight-save", row.daylight ? "true" : "false");
    telephone.changeZone("daylight-save-minutes", row.minutes);
    telephone.changeZone("auto-daylight-save", row.automatic ? "true" : "false");
    telephone.changeZone("daylight-save-zone-id", std::to_string(row.zone));
    EXPECT_EQ(tz(), row.tz);
    EXPECT_EQ(displayMinutes(isSouthern(row.zone)), row.displayMinutes) << row.tz;
    EXPECT_EQ(support::zoneScript(), std::string("#!/bin/sh\n\nexport TZ=") + row.tz + "\n\n");
  }
}

TEST_F(ClockWithChangingZone, AnnouncesTheZoneThenTimeAndDate) {
  telephone.changeZone("sntp-tz-offset", "-5");
  EXPECT_THAT(telephone.events.take(),
              ElementsAre("zone LOC05:00", "time 19:00:00", "date 15.06.2016"));
}

TEST_F(ClockWithChangingZone, InstallsTheZoneThenAnnouncesItThenWritesTheScript) {
  std::vector<std::string> seen;
  telephone.observer.onEvent = [&] { seen.push_back(tz() + support::zoneScript()); };
  telephone.changeZone("sntp-tz-offset", "-5");
  telephone.observer.onEvent = nullptr;
  EXPECT_EQ(g_storage, "setupTZ.sh, binary");
  const std::string script = "#!/bin/sh\n\nexport TZ=";
  EXPECT_THAT(seen, ElementsAre("LOC05:00" + script + "LOC00:00\n\n",  // the zone's event
                                "LOC05:00" + script + "LOC05:00\n\n",
                                "LOC05:00" + script + "LOC05:00\n\n"));
}

// The only software type whose zone depends on its time source.
class QexClock : public ClockAboutToStart {
 protected:
  void start() {
    telephone.management.setValue("related-software-type", "Velmora QEX");
    telephone.storeZone("1", false, false, 0);
    telephone.switchOn();
  }
};

TEST_F(QexClock, HasItsZoneWithAnyTimeSourceButZero) {
  start();
  EXPECT_EQ(tz(), "");
  EXPECT_EQ(support::zoneScript(), "#!/bin/sh\n\nexport TZ=\n\n");
  EXPECT_THAT(telephone.events.take(), ElementsAre("zone "));
  EXPECT_EQ(displayMinutes(), 0);
  for (const char* const source : {"1", "-1", "7"}) {
    telephone.changeZone("time-source", source);
    EXPECT_EQ(tz(), "LOC-1:00") << source;
    EXPECT_EQ(displayMinutes(), 60) << source;
  }
  telephone.changeZone("time-source", "0");
  EXPECT_EQ(tz(), "");
  EXPECT_EQ(displayMinutes(), 60);  // stays, by design
}

TEST_F(ClockAboutToStart, HasAZoneWithTimeSourceZeroUnderAnyOtherSoftwareType) {
  for (const char* const type : {"Velmora SIP", "Velmora TDM", "velmora qex", ""}) {
    telephone.management.setValue("related-software-type", type);
    telephone.storeZone("1", false, false, 0);
    telephone.switchOn();
    EXPECT_EQ(tz(), "LOC-1:00") << type;
    telephone.switchOff();
  }
}

}  // namespace
