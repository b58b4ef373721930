#include "ClockServiceDataHandler.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "unit/SettingsInMemory.h"

namespace {

using unit::describe;
using unit::SettingsInMemory;

// Sub-variants 2, 3 and 4 have American defaults; every other number has the usual ones.
constexpr int kAmerican[] = {2, 3, 4};
constexpr int kOtherVariants[] = {0, 1, 5, 6, -1, -2, INT_MAX, INT_MIN};

void expectDefaults(int variant, const char* settings, int dateFormat, int timeFormat) {
  SettingsInMemory store;
  const auto fresh = store.load(variant);
  EXPECT_EQ(describe(*fresh), settings) << "variant " << variant;
  EXPECT_EQ(fresh->getTimezoneOffset(), 0.0F) << "variant " << variant;
  EXPECT_EQ(fresh->getSoftwareType(), 0) << "variant " << variant;
  EXPECT_EQ(store.writes(), 0U) << "variant " << variant;
  store.put("DateFormat", "1");
  store.put("TimeFormat", timeFormat == 0 ? "1" : "0");
  const auto changed = store.load(variant);
  EXPECT_EQ(changed->getDefaultDateFormat(), dateFormat) << "variant " << variant;
  EXPECT_EQ(changed->getDefaultTimeFormat(), timeFormat) << "variant " << variant;
}

TEST(ClockServiceDataHandler, DefaultsDependOnTheHardware) {
  for (const int variant : kAmerican) expectDefaults(variant, unit::kAmericanDefaults, 2, 1);
  for (const int variant : kOtherVariants) expectDefaults(variant, unit::kDefaults, 0, 0);
}

TEST(ClockServiceDataHandler, DefaultsAreRestoredInMemoryOnly) {
  SettingsInMemory store;
  const auto settings = store.load();
  for (const bool done :
       {settings->setFallbackTime("2020-01-01T00:00:00+00:00"), settings->setSntpAddr("192.0.2.1"),
        settings->setNtpSecret("secret"), settings->setTimezoneOffset(5.5F),
        settings->setDaylightSavingActive("true"), settings->setDaylightSavingMinutes("30"),
        settings->setTimeSource("1"), settings->setDSTZoneID(9),
        settings->setAutomaticDaylightSavingActive("true"), settings->setDateFormat("1"),
        settings->setTimeFormat("1")})
    EXPECT_TRUE(done);
  settings->setSoftwareType("Velmora QEX");
  settings->setDefaultDataValues();
  // The two formats are not reset.
  EXPECT_EQ(describe(*settings), "2016-06-16T00:00:00+00:00 1 1 \"\" \"\" 0 false 60 0 0 false");
  EXPECT_EQ(settings->getSoftwareType(), 0);
  EXPECT_EQ(store.stored("NTPsharedSecret"), "secret");
  EXPECT_EQ(store.writes(), 11U);  // those of the setters
}

TEST(ClockServiceDataHandler, WorksWithoutAStore) {
  SettingsInMemory store;
  store.context.remove("DataAccessServiceIfc");
  const auto settings = store.load(3);
  EXPECT_FALSE(settings->setNtpSecret("secret"));
  EXPECT_EQ(describe(*settings), unit::kAmericanDefaults);
}

TEST(ClockServiceDataHandler, FlagsAreExactlyTrueOrFalse) {
  SettingsInMemory store;
  const auto settings = store.load(3);
  for (const char* const text : {"TRUE", "True", "1", "0", "yes", "no", "", " true", "true ",
                                 "FALSE", "False", "tru", "truee", "on"}) {
    EXPECT_FALSE(settings->setDaylightSavingActive(text)) << "\"" << text << "\"";
    EXPECT_FALSE(settings->setAutomaticDaylightSavingActive(text)) << "\"" << text << "\"";
  }
  EXPECT_EQ(describe(*settings), unit::kAmericanDefaults);
  EXPECT_EQ(store.writes(), 0U);
  for (const char* const text : {"false", "true"}) {
    EXPECT_TRUE(settings->setDaylightSavingActive(text));
    EXPECT_TRUE(settings->setAutomaticDaylightSavingActive(text));
    EXPECT_EQ(store.stored("DaylightSavingActive"), text);
    EXPECT_EQ(store.stored("AutoDaylightSavingEnabledDevice"), text);
    EXPECT_EQ(settings->getDaylightSavingActive(), std::string(text) == "true");
    EXPECT_EQ(settings->getAutomaticDaylightSavingActive(), std::string(text) == "true");
  }
}

TEST(ClockServiceDataHandler, ZoneIsAnyNumber) {
  SettingsInMemory store;
  const auto settings = store.load();
  for (const int id : {0, 14, 15, -1, 99, INT_MAX, INT_MIN}) {
    EXPECT_TRUE(settings->setDSTZoneID(id)) << "zone " << id;
    EXPECT_EQ(settings->getDSTZoneID(), id);
    EXPECT_EQ(store.stored("DaylightSavingZoneIDDevice"), std::to_string(id));
  }
}

TEST(ClockServiceDataHandler, TextsAreAnyText) {
  for (const char* const text : {"", "a&b<c>d\"e'f", "two\nlines", "tab\tand  blanks ", "&amp;",
                                 "]]>", "<!-- -->", "gr\xc3\xbc\xc3\x9f"}) {
    SettingsInMemory store;
    const auto settings = store.load();
    EXPECT_TRUE(settings->setNtpSecret(text)) << text;
    EXPECT_TRUE(settings->setFallbackTime(text)) << text;
    EXPECT_EQ(settings->getNtpSecret(), text);
    EXPECT_EQ(store.load()->getNtpSecret(), text) << "after a restart";
    EXPECT_EQ(store.load()->getFallbackTime(), text) << "after a restart";
  }
}

TEST(ClockServiceDataHandler, SoftwareTypeIsOneOfThreeTextsAndNotStored) {
  SettingsInMemory store;
  const auto settings = store.load();
  int expected = 0;
  for (const char* const text : {"Velmora SIP", "Velmora QEX", "Velmora TDM"}) {
    settings->setSoftwareType(text);
    EXPECT_EQ(settings->getSoftwareType(), ++expected) << text;
  }
  settings->setSoftwareType("Velmora QEX");
  for (const char* const text : {"", "velmora sip", "VELMORA SIP", "Velmora sip", "Velmora",
                                 "Velmora SIP ", " Velmora TDM", "Velmora  SIP", "SIP", "1"}) {
    settings->setSoftwareType(text);
    EXPECT_EQ(settings->getSoftwareType(), 2) << "\"" << text << "\"";
  }
  EXPECT_EQ(store.writes(), 0U);
}

}  // namespace
