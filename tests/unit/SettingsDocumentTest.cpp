// Loading the settings: the store's document, and the callbacks of its parser. WriteThroughTest
// loads each setting.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "ClockServiceDataHandler.h"
#include "unit/SettingsInMemory.h"

namespace {

using unit::describe;
using unit::kDefaults;
using unit::SettingsInMemory;
using Handler = ClockServiceDataHandler;

// Calls the parser's callbacks: "<NAME" begins an element, "/NAME" ends it, other texts are pieces
// of its content.
void parse(Handler& handler, const std::vector<std::string>& events) {
  for (const std::string& event : events) {
    if (event.front() == '<') {
      ClockServiceXmlStartElement(&handler, event.c_str() + 1, nullptr);
    } else if (event.front() == '/') {
      ClockServiceXmlEndElement(&handler, event.c_str() + 1);
    } else {
      ClockServiceXmlCharacterDataHandler(&handler, event.data(), static_cast<int>(event.size()));
    }
  }
}

TEST(SettingsDocument, ElementIsFromItsStartToTheNextEnd) {
  const struct {
    std::vector<std::string> events;
    const char* settings;
  } table[] = {
      // By design the second piece of a text replaces the first: settings are short single tokens.
      {{"<SNTPaddress", "time.", "example.com", "/SNTPaddress"},
       "2016-06-16T00:00:00+00:00 0 0 \"example.com\" \"\" 0 false 60 0 0 false"},
      {{"<DaylightSavingMinutes", "1", "5", "/DaylightSavingMinutes"},
       "2016-06-16T00:00:00+00:00 0 0 \"\" \"\" 0 false 5 0 0 false"},
      // An element without text is empty.
      {{"<NTPsharedSecret", "secret", "/NTPsharedSecret", "<NTPsharedSecret", "/NTPsharedSecret"},
       kDefaults},
      {{"<DaylightSavingMinutes", "/DaylightSavingMinutes"},
       "2016-06-16T00:00:00+00:00 0 0 \"\" \"\" 0 false 0 0 0 false"},
      // The end of the enclosing element, and text behind it, change nothing.
      {{"<SNTPaddress", "ntp", "/SNTPaddress", "/Settings", "\n", "<TimeFormat", "1",
        "/TimeFormat"},
       "2016-06-16T00:00:00+00:00 0 1 \"ntp\" \"\" 0 false 60 0 0 false"},
      // An inner element of another name ends the text of the outer one.
      {{"<DateFormat", "2", "<Unit", "/Unit", "/DateFormat"}, kDefaults},
      // The open element counts, not the name at its end.
      {{"<DateFormat", "2", "/TimeFormat"},
       "2016-06-16T00:00:00+00:00 2 0 \"\" \"\" 0 false 60 0 0 false"},
  };
  for (const auto& row : table) {
    SettingsInMemory store;
    const auto settings = store.load();
    parse(*settings, row.events);
    EXPECT_EQ(describe(*settings), row.settings);
    EXPECT_EQ(store.writes(), 0U);
  }
}

TEST(SettingsDocument, OtherElementsHoldNothing) {
  SettingsInMemory store;
  const auto settings = store.load();
  for (const char* const name :
       {"", "dateformat", "DATEFORMAT", "DateFormat2", "DateForma", " DateFormat", "Settings",
        "DaylightSavingZoneID", "AutoDaylightSavingEnabled", "softwareType", "NTPSharedSecret"}) {
    parse(*settings, {std::string("<") + name, "1", std::string("/") + name});
    EXPECT_EQ(describe(*settings), kDefaults) << "\"" << name << "\"";
  }
}

TEST(SettingsDocument, AttributesAndBytesBeyondTheLengthAreIgnored) {
  SettingsInMemory store;
  const auto settings = store.load();
  const char* attributes[] = {"DateFormat", "2", nullptr};
  for (const int length : {6, -1}) {
    ClockServiceXmlStartElement(settings.get(), "NTPsharedSecret", attributes);
    ClockServiceXmlCharacterDataHandler(settings.get(), "secret and more", length);
    ClockServiceXmlEndElement(settings.get(), "NTPsharedSecret");
    EXPECT_EQ(settings->getNtpSecret(), length > 0 ? "secret" : "");
  }
  EXPECT_EQ(describe(*settings), kDefaults);
}

TEST(SettingsDocument, FlagsAreTrueForExactlyTrue) {
  for (const char* const content : {"false", "TRUE", "1", "yes", "", "true "}) {
    SettingsInMemory store;
    store.put("DaylightSavingActive", content);
    store.put("AutoDaylightSavingEnabledDevice", content);
    const auto settings = store.load(3);
    EXPECT_FALSE(settings->getDaylightSavingActive()) << "\"" << content << "\"";
    EXPECT_FALSE(settings->getAutomaticDaylightSavingActive()) << "\"" << content << "\"";
  }
}

TEST(SettingsDocument, FullReloadTakesWhatIsStoredAndDefaultsForTheRest) {
  SettingsInMemory store;
  const auto settings = store.load();
  settings->setSoftwareType("Velmora TDM");
  EXPECT_TRUE(settings->setDateFormat("1"));
  EXPECT_TRUE(settings->setDaylightSavingMinutes("30"));
  parse(*settings,
        {"<SNTPaddress", "only in memory", "/", "<DaylightSavingZoneIDDevice", "9", "/"});
  store.put("TimeFormat", "1");
  store.put("TimezoneOffset", "-3.5");
  settings->reinitialiseData(false);
  EXPECT_EQ(describe(*settings), "2016-06-16T00:00:00+00:00 1 1 \"\" \"\" -3.5 false 30 0 0 false");
  EXPECT_EQ(settings->getSoftwareType(), 0);
}

TEST(SettingsDocument, ReloadOfTheFormatsLeavesTheRestAlone) {
  SettingsInMemory store;
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

TEST(SettingsDocument, ReloadOfTheFormatsResetsThoseThatAreNotStored) {
  SettingsInMemory store;
  const auto settings = store.load(3);
  parse(*settings, {"<DateFormat", "0", "/", "<TimeFormat", "0", "/"});
  settings->reinitialiseData(true);
  EXPECT_EQ(describe(*settings), unit::kAmericanDefaults);
}

TEST(SettingsDocument, StoreThatCannotBeReadLeavesTheDefaults) {
  SettingsInMemory store;
  EXPECT_TRUE(store.access.setItem("OtherSettings", "DateFormat", "2"));  // another schema's
  EXPECT_EQ(store.load()->getDateFormat(), 0);
  store.put("DateFormat", "1");
  store.access.refuseGets(true);
  const auto settings = store.load();
  EXPECT_EQ(describe(*settings), kDefaults);
  store.access.refuseGets(false);
  settings->reinitialiseData(false);
  EXPECT_EQ(settings->getDateFormat(), 1);
}

// Only one thread at a time uses the parser, and no value is lost.
TEST(SettingsDocument, TwoThreadsCanLoadAtOnce) {
  SettingsInMemory store;
  store.put("DateFormat", "2");
  store.put("TimeFormat", "1");
  const auto settings = store.load(3);  // whose defaults are the stored values
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
