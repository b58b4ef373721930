#include "ClockServiceDataHandler.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "unit/SettingsStore.h"

namespace {

using unit::SettingsStore;

// 2, 3 and 4 are one class of hardware; every other number is of the other.
constexpr int kAmerican[] = {2, 3, 4};
constexpr int kOtherVariants[] = {0, 1, 5, 6, -1, -2, INT_MAX, INT_MIN};

TEST(ClockServiceDataHandler, FreshStoreOnSubVariantsTwoToFour) {
  for (const int variant : kAmerican) {
    SettingsStore store;
    const auto settings = store.load(variant);
    EXPECT_EQ(settings->getDateFormat(), 2) << "variant " << variant;
    EXPECT_EQ(settings->getTimeFormat(), 1) << "variant " << variant;
    EXPECT_TRUE(settings->getDaylightSavingActive()) << "variant " << variant;
    EXPECT_TRUE(settings->getAutomaticDaylightSavingActive()) << "variant " << variant;
    EXPECT_EQ(settings->getDSTZoneID(), 12) << "variant " << variant;
  }
}

TEST(ClockServiceDataHandler, FreshStoreOnOtherSubVariants) {
  for (const int variant : kOtherVariants) {
    SettingsStore store;
    const auto settings = store.load(variant);
    EXPECT_EQ(settings->getDateFormat(), 0) << "variant " << variant;
    EXPECT_EQ(settings->getTimeFormat(), 0) << "variant " << variant;
    EXPECT_FALSE(settings->getDaylightSavingActive()) << "variant " << variant;
    EXPECT_FALSE(settings->getAutomaticDaylightSavingActive()) << "variant " << variant;
    EXPECT_EQ(settings->getDSTZoneID(), 0) << "variant " << variant;
  }
}

TEST(ClockServiceDataHandler, FreshStoreOnEveryHardware) {
  for (const int variant : {0, 1, 2, 3, 4, 5}) {
    SettingsStore store;
    const auto settings = store.load(variant);
    EXPECT_EQ(settings->getFallbackTime(), "2016-06-16T00:00:00+00:00") << "variant " << variant;
    EXPECT_EQ(settings->getSntpAddr(), "") << "variant " << variant;
    EXPECT_EQ(settings->getNtpSecret(), "") << "variant " << variant;
    EXPECT_EQ(settings->getTimezoneOffset(), 0.0F) << "variant " << variant;
    EXPECT_EQ(settings->getTimezoneOffsetStr(), "0") << "variant " << variant;
    EXPECT_EQ(settings->getDaylightSavingMinutes(), 60) << "variant " << variant;
    EXPECT_EQ(settings->getTimeSource(), 0) << "variant " << variant;
    EXPECT_EQ(settings->getSoftwareType(), 0) << "variant " << variant;
    EXPECT_EQ(store.writes(), 0U) << "variant " << variant;
  }
}

TEST(ClockServiceDataHandler, DefaultsAreRestoredInMemoryOnly) {
  SettingsStore store;
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
  EXPECT_EQ(settings->getFallbackTime(), "2016-06-16T00:00:00+00:00");
  EXPECT_EQ(settings->getSntpAddr(), "");
  EXPECT_EQ(settings->getNtpSecret(), "");
  EXPECT_EQ(settings->getTimezoneOffset(), 0.0F);
  EXPECT_FALSE(settings->getDaylightSavingActive());
  EXPECT_EQ(settings->getDaylightSavingMinutes(), 60);
  EXPECT_EQ(settings->getTimeSource(), 0);
  EXPECT_EQ(settings->getDSTZoneID(), 0);
  EXPECT_FALSE(settings->getAutomaticDaylightSavingActive());
  EXPECT_EQ(settings->getSoftwareType(), 0);
  EXPECT_EQ(settings->getDateFormat(), 1);  // the formats are not among them
  EXPECT_EQ(settings->getTimeFormat(), 1);
  EXPECT_EQ(store.stored("NTPsharedSecret"), "secret");
  EXPECT_EQ(store.writes(), 11U);  // those of the setters
}

TEST(ClockServiceDataHandler, DefaultFormatsDependOnTheHardwareAlone) {
  for (const int variant : kAmerican) {
    SettingsStore store;
    store.put("DateFormat", "1");
    store.put("TimeFormat", "0");
    EXPECT_EQ(store.load(variant)->getDefaultDateFormat(), 2) << "variant " << variant;
    EXPECT_EQ(store.load(variant)->getDefaultTimeFormat(), 1) << "variant " << variant;
  }
  for (const int variant : kOtherVariants) {
    SettingsStore store;
    EXPECT_EQ(store.load(variant)->getDefaultDateFormat(), 0) << "variant " << variant;
    EXPECT_EQ(store.load(variant)->getDefaultTimeFormat(), 0) << "variant " << variant;
  }
}

TEST(ClockServiceDataHandler, WorksWithoutAStore) {
  SettingsStore store;
  store.context.remove("DataAccessServiceIfc");
  const auto settings = store.load(3);
  EXPECT_EQ(settings->getDateFormat(), 2);
  EXPECT_EQ(settings->getFallbackTime(), "2016-06-16T00:00:00+00:00");
  EXPECT_FALSE(settings->setNtpSecret("secret"));
  EXPECT_EQ(settings->getNtpSecret(), "");
}

TEST(ClockServiceDataHandler, FlagsAreExactlyTrueOrFalse) {
  for (const char* const text : {"TRUE", "True", "1", "0", "yes", "no", "", " true", "true ",
                                 "FALSE", "False", "tru", "truee", "on"}) {
    SettingsStore store;
    const auto settings = store.load(3);
    EXPECT_FALSE(settings->setDaylightSavingActive(text)) << "\"" << text << "\"";
    EXPECT_FALSE(settings->setAutomaticDaylightSavingActive(text)) << "\"" << text << "\"";
    EXPECT_TRUE(settings->getDaylightSavingActive()) << "\"" << text << "\"";
    EXPECT_TRUE(settings->getAutomaticDaylightSavingActive()) << "\"" << text << "\"";
    EXPECT_EQ(store.writes(), 0U) << "\"" << text << "\"";
  }
}

TEST(ClockServiceDataHandler, FlagsGoBothWays) {
  SettingsStore store;
  const auto settings = store.load(3);
  EXPECT_TRUE(settings->setDaylightSavingActive("false"));
  EXPECT_TRUE(settings->setAutomaticDaylightSavingActive("false"));
  EXPECT_FALSE(settings->getDaylightSavingActive());
  EXPECT_FALSE(settings->getAutomaticDaylightSavingActive());
  EXPECT_EQ(store.stored("DaylightSavingActive"), "false");
  EXPECT_EQ(store.stored("AutoDaylightSavingEnabledDevice"), "false");
  EXPECT_TRUE(settings->setDaylightSavingActive("true"));
  EXPECT_TRUE(settings->getDaylightSavingActive());
}

TEST(ClockServiceDataHandler, ZoneIsAnyNumber) {
  SettingsStore store;
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
    SettingsStore store;
    const auto settings = store.load();
    EXPECT_TRUE(settings->setNtpSecret(text)) << text;
    EXPECT_TRUE(settings->setFallbackTime(text)) << text;
    EXPECT_EQ(settings->getNtpSecret(), text);
    EXPECT_EQ(store.load()->getNtpSecret(), text) << "after a restart";
    EXPECT_EQ(store.load()->getFallbackTime(), text) << "after a restart";
  }
}

TEST(ClockServiceDataHandler, SoftwareTypeIsOneOfThreeTextsAndNotStored) {
  SettingsStore store;
  const auto settings = store.load();
  const struct {
    const char* text;
    int type;
  } table[] = {{"Velmora SIP", 1}, {"Velmora QEX", 2}, {"Velmora TDM", 3}, {"Velmora SIP", 1}};
  for (const auto& row : table) {
    settings->setSoftwareType(row.text);
    EXPECT_EQ(settings->getSoftwareType(), row.type) << row.text;
  }
  EXPECT_EQ(store.writes(), 0U);
}

TEST(ClockServiceDataHandler, AnotherSoftwareTypeChangesNothing) {
  SettingsStore store;
  const auto settings = store.load();
  settings->setSoftwareType("Velmora QEX");
  for (const char* const text : {"", "velmora sip", "VELMORA SIP", "Velmora sip", "Velmora",
                                 "Velmora SIP ", " Velmora TDM", "Velmora  SIP", "SIP", "1"}) {
    settings->setSoftwareType(text);
    EXPECT_EQ(settings->getSoftwareType(), 2) << "\"" << text << "\"";
  }
}

}  // namespace
