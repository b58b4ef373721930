// Loading the settings: the store's document, and the callbacks of its parser.

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <cstring>
#include <string>
#include <thread>

#include "ClockServiceDataHandler.h"
#include "unit/SettingsStore.h"

namespace {

using unit::SettingsStore;
using Handler = ClockServiceDataHandler;

void start(Handler& handler, const char* name) {
  ClockServiceXmlStartElement(&handler, name, nullptr);
}
void text(Handler& handler, const std::string& piece) {
  ClockServiceXmlCharacterDataHandler(&handler, piece.data(), static_cast<int>(piece.size()));
}
void end(Handler& handler, const char* name) {
  ClockServiceXmlEndElement(&handler, name);
}

void element(Handler& handler, const char* name, const std::string& content) {
  start(handler, name);
  text(handler, content);
  end(handler, name);
}

// Every setting as one text.
std::string describe(const Handler& h) {
  const auto flag = [](bool value) { return value ? std::string(" true") : std::string(" false"); };
  return h.getFallbackTime() + " " + std::to_string(h.getDateFormat()) + " " +
         std::to_string(h.getTimeFormat()) + " \"" + h.getSntpAddr() + "\" \"" + h.getNtpSecret() +
         "\" " + h.getTimezoneOffsetStr() + flag(h.getDaylightSavingActive()) + " " +
         std::to_string(h.getDaylightSavingMinutes()) + " " + std::to_string(h.getTimeSource()) +
         " " + std::to_string(h.getDSTZoneID()) + flag(h.getAutomaticDaylightSavingActive());
}

constexpr const char* kDefaults = "2016-06-16T00:00:00+00:00 0 0 \"\" \"\" 0 false 60 0 0 false";

TEST(SettingsDocument, EachElementHoldsOneSetting) {
  const struct {
    const char* name;
    const char* content;
    const char* settings;
  } table[] = {
      {"FallbackDateTime", "later", "later 0 0 \"\" \"\" 0 false 60 0 0 false"},
      {"DateFormat", "2", "2016-06-16T00:00:00+00:00 2 0 \"\" \"\" 0 false 60 0 0 false"},
      {"TimeFormat", "1", "2016-06-16T00:00:00+00:00 0 1 \"\" \"\" 0 false 60 0 0 false"},
      {"SNTPaddress", "ntp", "2016-06-16T00:00:00+00:00 0 0 \"ntp\" \"\" 0 false 60 0 0 false"},
      {"NTPsharedSecret", "s", "2016-06-16T00:00:00+00:00 0 0 \"\" \"s\" 0 false 60 0 0 false"},
      {"TimezoneOffset", "5.5", "2016-06-16T00:00:00+00:00 0 0 \"\" \"\" 5.5 false 60 0 0 false"},
      {"DaylightSavingActive", "true",
       "2016-06-16T00:00:00+00:00 0 0 \"\" \"\" 0 true 60 0 0 false"},
      {"DaylightSavingMinutes", "30",
       "2016-06-16T00:00:00+00:00 0 0 \"\" \"\" 0 false 30 0 0 false"},
      {"QexTimeSource", "3", "2016-06-16T00:00:00+00:00 0 0 \"\" \"\" 0 false 60 3 0 false"},
      {"DaylightSavingZoneIDDevice", "9",
       "2016-06-16T00:00:00+00:00 0 0 \"\" \"\" 0 false 60 0 9 false"},
      {"AutoDaylightSavingEnabledDevice", "true",
       "2016-06-16T00:00:00+00:00 0 0 \"\" \"\" 0 false 60 0 0 true"},
  };
  for (const auto& row : table) {
    SettingsStore store;
    const auto settings = store.load();
    element(*settings, row.name, row.content);
    EXPECT_EQ(describe(*settings), row.settings) << row.name;
    EXPECT_EQ(store.writes(), 0U) << row.name;
  }
}

TEST(SettingsDocument, OtherElementsHoldNothing) {
  SettingsStore store;
  const auto settings = store.load();
  for (const char* const name :
       {"", "dateformat", "DATEFORMAT", "DateFormat2", "DateForma", " DateFormat", "Settings",
        "DaylightSavingZoneID", "AutoDaylightSavingEnabled", "softwareType", "NTPSharedSecret"}) {
    element(*settings, name, "1");
    EXPECT_EQ(describe(*settings), kDefaults) << "\"" << name << "\"";
  }
}

TEST(SettingsDocument, AttributesAreIgnored) {
  SettingsStore store;
  const auto settings = store.load();
  const char* attributes[] = {"DateFormat", "2", nullptr};
  ClockServiceXmlStartElement(settings.get(), "TimeFormat", attributes);
  text(*settings, "1");
  end(*settings, "TimeFormat");
  EXPECT_EQ(settings->getTimeFormat(), 1);
  EXPECT_EQ(settings->getDateFormat(), 0);
}

// By design: settings are single short tokens.
TEST(SettingsDocument, SecondPieceOfATextReplacesTheFirst) {
  SettingsStore store;
  const auto settings = store.load();
  start(*settings, "SNTPaddress");
  text(*settings, "time.");
  text(*settings, "example.com");
  end(*settings, "SNTPaddress");
  EXPECT_EQ(settings->getSntpAddr(), "example.com");
  start(*settings, "DaylightSavingMinutes");
  text(*settings, "1");
  text(*settings, "5");
  end(*settings, "DaylightSavingMinutes");
  EXPECT_EQ(settings->getDaylightSavingMinutes(), 5);
}

TEST(SettingsDocument, OnlyTheGivenBytesOfTheTextCount) {
  SettingsStore store;
  const auto settings = store.load();
  start(*settings, "NTPsharedSecret");
  ClockServiceXmlCharacterDataHandler(settings.get(), "secret and more", 6);
  end(*settings, "NTPsharedSecret");
  EXPECT_EQ(settings->getNtpSecret(), "secret");
}

TEST(SettingsDocument, TextOfANegativeLengthIsEmpty) {
  SettingsStore store;
  const auto settings = store.load();
  start(*settings, "NTPsharedSecret");
  ClockServiceXmlCharacterDataHandler(settings.get(), "secret", -1);
  end(*settings, "NTPsharedSecret");
  EXPECT_EQ(settings->getNtpSecret(), "");
}

TEST(SettingsDocument, ElementWithoutTextIsEmpty) {
  SettingsStore store;
  const auto settings = store.load();
  element(*settings, "NTPsharedSecret", "secret");
  start(*settings, "NTPsharedSecret");
  end(*settings, "NTPsharedSecret");
  EXPECT_EQ(settings->getNtpSecret(), "");
  start(*settings, "DaylightSavingMinutes");
  end(*settings, "DaylightSavingMinutes");
  EXPECT_EQ(settings->getDaylightSavingMinutes(), 0);
}

TEST(SettingsDocument, EndOfAnElementIsTheEndOfItsText) {
  SettingsStore store;
  const auto settings = store.load();
  element(*settings, "SNTPaddress", "ntp");
  end(*settings, "Settings");  // the enclosing element
  text(*settings, "\n");
  start(*settings, "TimeFormat");
  text(*settings, "1");
  end(*settings, "TimeFormat");
  EXPECT_EQ(settings->getSntpAddr(), "ntp");
  EXPECT_EQ(settings->getTimeFormat(), 1);
}

TEST(SettingsDocument, EndDecidesByTheOpenElementNotByItsName) {
  SettingsStore store;
  const auto settings = store.load();
  start(*settings, "DateFormat");
  text(*settings, "2");
  end(*settings, "TimeFormat");
  EXPECT_EQ(settings->getDateFormat(), 2);
  EXPECT_EQ(settings->getTimeFormat(), 0);
}

TEST(SettingsDocument, NumbersAreReadAsFarAsTheyGo) {
  const struct {
    const char* content;
    int number;
  } table[] = {{"7", 7},
               {"-5", -5},
               {" 12x", 12},
               {"x", 0},
               {"0x10", 0},
               {"010", 10},
               {"2147483648", INT_MAX},
               {"-99999999999999999999", INT_MIN}};
  for (const auto& row : table) {
    SettingsStore store;
    const auto settings = store.load();
    for (const char* const name : {"DateFormat", "TimeFormat", "DaylightSavingMinutes",
                                   "QexTimeSource", "DaylightSavingZoneIDDevice"})
      element(*settings, name, row.content);
    const std::string n = std::to_string(row.number);
    EXPECT_EQ(describe(*settings), "2016-06-16T00:00:00+00:00 " + n + " " + n +
                                       " \"\" \"\" 0 false " + n + " " + n + " " + n + " false")
        << "\"" << row.content << "\"";
  }
}

TEST(SettingsDocument, FlagsAreTrueForExactlyTrue) {
  for (const char* const content : {"false", "TRUE", "1", "yes", "", "true "}) {
    SettingsStore store;
    const auto settings = store.load(3);
    element(*settings, "DaylightSavingActive", content);
    element(*settings, "AutoDaylightSavingEnabledDevice", content);
    EXPECT_FALSE(settings->getDaylightSavingActive()) << "\"" << content << "\"";
    EXPECT_FALSE(settings->getAutomaticDaylightSavingActive()) << "\"" << content << "\"";
  }
}

TEST(SettingsDocument, FullReloadTakesWhatIsStoredAndDefaultsForTheRest) {
  SettingsStore store;
  const auto settings = store.load();
  settings->setSoftwareType("Velmora TDM");
  EXPECT_TRUE(settings->setDateFormat("1"));
  EXPECT_TRUE(settings->setDaylightSavingMinutes("30"));
  element(*settings, "SNTPaddress", "only in memory");
  element(*settings, "DaylightSavingZoneIDDevice", "9");
  store.put("TimeFormat", "1");
  store.put("TimezoneOffset", "-3.5");
  settings->reinitialiseData(false);
  EXPECT_EQ(describe(*settings), "2016-06-16T00:00:00+00:00 1 1 \"\" \"\" -3.5 false 30 0 0 false");
  EXPECT_EQ(settings->getSoftwareType(), 0);
}

TEST(SettingsDocument, ReloadOfTheFormatsLeavesTheRestAlone) {
  SettingsStore store;
  const auto settings = store.load();
  settings->setSoftwareType("Velmora TDM");
  EXPECT_TRUE(settings->setTimezoneOffset(2.0F));
  EXPECT_TRUE(settings->setTimeFormat("1"));
  for (const char* const key :
       {"FallbackDateTime", "DateFormat", "SNTPaddress", "NTPsharedSecret", "TimezoneOffset",
        "DaylightSavingActive", "DaylightSavingMinutes", "QexTimeSource",
        "DaylightSavingZoneIDDevice", "AutoDaylightSavingEnabledDevice"})
    store.put(key, "1");
  settings->reinitialiseData(true);
  EXPECT_EQ(describe(*settings), "2016-06-16T00:00:00+00:00 1 1 \"\" \"\" 2 false 60 0 0 false");
  EXPECT_EQ(settings->getSoftwareType(), 3);
}

TEST(SettingsDocument, ReloadOfTheFormatsPutsUnstoredOnesBackToDefault) {
  SettingsStore store;
  const auto settings = store.load(3);
  element(*settings, "DateFormat", "0");
  element(*settings, "TimeFormat", "0");
  settings->reinitialiseData(true);
  EXPECT_EQ(settings->getDateFormat(), 2);
  EXPECT_EQ(settings->getTimeFormat(), 1);
}

TEST(SettingsDocument, StoreThatCannotBeReadLeavesTheDefaults) {
  SettingsStore store;
  store.put("DateFormat", "1");
  store.put("DaylightSavingMinutes", "30");
  store.access.refuseGets(true);
  const auto settings = store.load();
  EXPECT_EQ(describe(*settings), kDefaults);
  store.access.refuseGets(false);
  settings->reinitialiseData(false);
  EXPECT_EQ(settings->getDateFormat(), 1);
  EXPECT_EQ(settings->getDaylightSavingMinutes(), 30);
}

TEST(SettingsDocument, OtherSchemasAreNotLoaded) {
  SettingsStore store;
  EXPECT_TRUE(store.access.setItem("OtherSettings", "DateFormat", "1"));
  EXPECT_EQ(store.load()->getDateFormat(), 0);
}

// Two threads that load at once take turns with the parser, and no value is lost.
TEST(SettingsDocument, LoadingFromTwoThreadsTakesTurns) {
  SettingsStore store;
  store.put("DateFormat", "2");
  store.put("TimeFormat", "1");
  const auto settings = store.load(3);  // the defaults are these values, too
  std::atomic<bool> sawOther{false};
  const auto reload = [&] {
    for (int i = 0; i < 200; ++i) {
      settings->reinitialiseData(true);
      if (settings->getDateFormat() != 2 || settings->getTimeFormat() != 1) sawOther = true;
    }
  };
  std::thread first(reload);
  std::thread second(reload);
  first.join();
  second.join();
  EXPECT_FALSE(sawOther);
}

}  // namespace
