// The fifteen zones: TZ, the script for other programs, and the local time around both changes.
#include "acceptance/Acceptance.h"

namespace {

using conformance::instantOf;
using conformance::setClock;

// The second before a change, and the change.
struct Change {
  const char* utc;  // of the change, in 2026
  const char* before;
  const char* after;
};

struct ZoneRow {
  const char* id;
  const char* offset;  // hours, or seconds
  const char* tz;
  Change toDaylightSaving;
  Change back;
};

const ZoneRow kZones[] = {
    {"1",
     "9.5",
     "LOC-9:30DST-10:30,M10.5.0/02:00,M4.1.0/03:00",
     {"2026-10-24T16:30:00", "01:59:59", "03:00:00"},
     {"2026-04-04T16:30:00", "02:59:59", "02:00:00"}},
    {"2",
     "10",
     "LOC-10:00DST-11:00,M10.5.0/02:00,M3.5.0/03:00",
     {"2026-10-24T16:00:00", "01:59:59", "03:00:00"},
     {"2026-03-28T16:00:00", "02:59:59", "02:00:00"}},
    {"3",
     "8",
     "LOC-8:00DST-9:00,M10.5.0/02:00,M3.5.0/03:00",
     {"2026-10-24T18:00:00", "01:59:59", "03:00:00"},
     {"2026-03-28T18:00:00", "02:59:59", "02:00:00"}},
    {"4",
     "10",
     "LOC-10:00DST-11:00,M10.1.0/02:00,M4.1.0/03:00",
     {"2026-10-03T16:00:00", "01:59:59", "03:00:00"},
     {"2026-04-04T16:00:00", "02:59:59", "02:00:00"}},
    {"5",
     "-3",
     "LOC03:00DST02:00,M10.3.0/00:00,M2.3.0/00:00",
     {"2026-10-18T03:00:00", "23:59:59", "01:00:00"},
     {"2026-02-15T02:00:00", "23:59:59", "23:00:00"}},
    {"6",
     "-8",
     "LOC08:00DST07:00,M3.2.0/02:00,M11.1.0/02:00",
     {"2026-03-08T10:00:00", "01:59:59", "03:00:00"},
     {"2026-11-01T09:00:00", "01:59:59", "01:00:00"}},
    {"7",
     "-3.5",
     "LOC03:30DST02:30,M3.2.0/00:00,M11.1.0/00:00",
     {"2026-03-08T03:30:00", "23:59:59", "01:00:00"},
     {"2026-11-01T02:30:00", "23:59:59", "23:00:00"}},
    {"8",
     "0",
     "LOC00:00DST-1:00,M3.5.0/01:00,M10.5.0/02:00",
     {"2026-03-29T01:00:00", "00:59:59", "02:00:00"},
     {"2026-10-25T01:00:00", "01:59:59", "01:00:00"}},
    {"9",
     "1",
     "LOC-1:00DST-2:00,M3.5.0/02:00,M10.5.0/03:00",
     {"2026-03-29T01:00:00", "01:59:59", "03:00:00"},
     {"2026-10-25T01:00:00", "02:59:59", "02:00:00"}},
    {"10",
     "2",
     "LOC-2:00DST-3:00,M3.5.0/03:00,M10.5.0/04:00",
     {"2026-03-29T01:00:00", "02:59:59", "04:00:00"},
     {"2026-10-25T01:00:00", "03:59:59", "03:00:00"}},
    {"11",
     "-6",
     "LOC06:00DST05:00,M4.1.0/02:00,M10.5.0/02:00",
     {"2026-04-05T08:00:00", "01:59:59", "03:00:00"},
     {"2026-10-25T07:00:00", "01:59:59", "01:00:00"}},
    {"12",
     "-5",
     "LOC05:00DST04:00,M3.2.0/02:00,M11.1.0/02:00",
     {"2026-03-08T07:00:00", "01:59:59", "03:00:00"},
     {"2026-11-01T06:00:00", "01:59:59", "01:00:00"}},
    {"13",
     "12",
     "LOC-12:00DST-13:00,M9.5.0/02:00,M4.1.0/03:00",
     {"2026-09-26T14:00:00", "01:59:59", "03:00:00"},
     {"2026-04-04T14:00:00", "02:59:59", "02:00:00"}},
    {"14",
     "45900",
     "LOC-12:45DST-13:45,M9.5.0/02:45,M4.1.0/03:45",
     {"2026-09-26T14:00:00", "02:44:59", "03:45:00"},
     {"2026-04-04T14:00:00", "03:44:59", "02:45:00"}},
};

class ZonesAcceptance : public conformance::Acceptance {
 protected:
  void useZone(const char* id, const char* offset) {
    manage({{"sntp-tz-offset", offset},
            {"daylight-save-minutes", "60"},
            {"daylight-save-zone-id", id},
            {"auto-daylight-save", "true"},
            {"daylight-save", "true"}});
  }
  std::string localTimeAt(std::int64_t instant) {
    setClock(instant);
    return telephone().localTime();
  }
  void expectChange(const Change& change) {
    const std::int64_t instant = instantOf(change.utc);
    EXPECT_EQ(localTimeAt(instant - 1), change.before) << change.utc;
    EXPECT_EQ(localTimeAt(instant), change.after) << change.utc;
  }
  std::string script() { return conformance::contentOf(platform().storageFolder() / "setupTZ.sh"); }
};

TEST_F(ZonesAcceptance, ChangeAtTheirInstants) {
  telephone();
  for (const ZoneRow& zone : kZones) {
    SCOPED_TRACE(std::string("zone ") + zone.id);
    useZone(zone.id, zone.offset);
    EXPECT_STREQ(std::getenv("TZ"), zone.tz);  // NOLINT(concurrency-mt-unsafe)
    expectChange(zone.toDaylightSaving);
    expectChange(zone.back);
  }
}

TEST_F(ZonesAcceptance, ZoneZeroHasNoChanges) {
  telephone();
  useZone("0", "1");
  EXPECT_STREQ(std::getenv("TZ"), "LOC-2:00");  // NOLINT(concurrency-mt-unsafe)
  EXPECT_EQ(localTimeAt(instantOf("2026-01-01T00:00:00")), "02:00:00");
  EXPECT_EQ(localTimeAt(instantOf("2026-07-01T00:00:00")), "02:00:00");
}

TEST_F(ZonesAcceptance, AreInTheScriptForOtherPrograms) {
  telephone();
  const auto expectScript = [this](const char* id, const char* offset, const std::string& tz) {
    useZone(id, offset);
    EXPECT_EQ(script(), "#!/bin/sh\n\nexport TZ=" + tz + "\n\n");
  };
  for (const ZoneRow& zone : kZones) expectScript(zone.id, zone.offset, zone.tz);
  expectScript("0", "1", "LOC-2:00");
}

}  // namespace
