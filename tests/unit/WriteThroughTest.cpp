// Each setter of ClockServiceDataHandler writes the store first, and memory only after the store
// has accepted the value.

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ClockServiceDataHandler.h"
#include "unit/SettingsInMemory.h"

namespace {

using unit::SettingsInMemory;
using Handler = ClockServiceDataHandler;
using Text = const std::string&;

// A setting that can be written as text: its key, its setter and its value as text, and a value
// that is not the default.
struct Setting {
  const char* key;
  std::function<bool(Handler&, Text)> set;
  std::function<std::string(const Handler&)> get;
  const char* value;
};

std::string flag(bool value) {
  return value ? "true" : "false";
}

const std::vector<Setting> kSettings{
    {"FallbackDateTime", [](Handler& h, Text v) { return h.setFallbackTime(v); },
     [](const Handler& h) { return h.getFallbackTime(); }, "2026-11-20T10:11:12+00:00"},
    {"DateFormat", [](Handler& h, Text v) { return h.setDateFormat(v); },
     [](const Handler& h) { return std::to_string(h.getDateFormat()); }, "1"},
    {"TimeFormat", [](Handler& h, Text v) { return h.setTimeFormat(v); },
     [](const Handler& h) { return std::to_string(h.getTimeFormat()); }, "5"},
    {"SNTPaddress", [](Handler& h, Text v) { return h.setSntpAddr(v); },
     [](const Handler& h) { return h.getSntpAddr(); }, "time.example.com"},
    {"NTPsharedSecret", [](Handler& h, Text v) { return h.setNtpSecret(v); },
     [](const Handler& h) { return h.getNtpSecret(); }, "s3cret"},
    {"TimezoneOffset",
     [](Handler& h, Text v) {
       std::string reason;
       return h.setTimezoneOffset(v, reason);
     },
     [](const Handler& h) { return h.getTimezoneOffsetStr(); }, "5.75"},
    {"DaylightSavingActive", [](Handler& h, Text v) { return h.setDaylightSavingActive(v); },
     [](const Handler& h) { return flag(h.getDaylightSavingActive()); }, "true"},
    {"DaylightSavingMinutes", [](Handler& h, Text v) { return h.setDaylightSavingMinutes(v); },
     [](const Handler& h) { return std::to_string(h.getDaylightSavingMinutes()); }, "30"},
    {"QexTimeSource", [](Handler& h, Text v) { return h.setTimeSource(v); },
     [](const Handler& h) { return std::to_string(h.getTimeSource()); }, "2"},
    {"DaylightSavingZoneIDDevice", [](Handler& h, Text v) { return h.setDSTZoneID(std::stoi(v)); },
     [](const Handler& h) { return std::to_string(h.getDSTZoneID()); }, "9"},
    {"AutoDaylightSavingEnabledDevice",
     [](Handler& h, Text v) { return h.setAutomaticDaylightSavingActive(v); },
     [](const Handler& h) { return flag(h.getAutomaticDaylightSavingActive()); }, "true"},
};

TEST(WriteThrough, AcceptedValueIsStoredAndChangesNoOtherSetting) {
  for (const Setting& changed : kSettings) {
    SettingsInMemory store;
    const auto fresh = store.load();
    const auto settings = store.load();
    EXPECT_TRUE(changed.set(*settings, changed.value)) << changed.key;
    EXPECT_EQ(store.stored(changed.key), changed.value) << changed.key;
    EXPECT_EQ(store.writes(), 1U) << changed.key;
    const auto restarted = store.load();
    for (const Setting& setting : kSettings) {
      const std::string expected = &setting == &changed ? changed.value : setting.get(*fresh);
      EXPECT_EQ(setting.get(*settings), expected) << setting.key << " with " << changed.key;
      EXPECT_EQ(setting.get(*restarted), expected) << setting.key << " after a restart";
    }
  }
}

TEST(WriteThrough, AllSettingsTogetherAreThereAfterARestart) {
  SettingsInMemory store;
  const auto settings = store.load(3);
  for (const Setting& setting : kSettings)
    EXPECT_TRUE(setting.set(*settings, setting.value)) << setting.key;
  const auto restarted = store.load(3);
  for (const Setting& setting : kSettings)
    EXPECT_EQ(setting.get(*restarted), setting.value) << setting.key;
}

TEST(WriteThrough, RefusedWriteLeavesMemoryAndStoreAlone) {
  for (const Setting& setting : kSettings) {
    SettingsInMemory store;
    const auto settings = store.load();
    const std::string before = setting.get(*settings);
    store.refuseWrites(1);
    EXPECT_FALSE(setting.set(*settings, setting.value)) << setting.key;
    EXPECT_EQ(setting.get(*settings), before) << setting.key;
    EXPECT_EQ(store.stored(setting.key), std::nullopt) << setting.key;
    EXPECT_EQ(store.writes(), 1U) << setting.key;
    EXPECT_TRUE(setting.set(*settings, setting.value)) << setting.key;
    EXPECT_EQ(setting.get(*settings), setting.value) << setting.key;
  }
}

struct NumberText {
  const char* text;
  int number;
};
constexpr NumberText kNumberTexts[] = {{"7", 7},
                                       {"-5", -5},
                                       {" 12x", 12},
                                       {"abc", 0},
                                       {"", 0},
                                       {"007", 7},
                                       {"0x10", 0},
                                       {"1.9", 1},
                                       {"2147483647", INT_MAX},
                                       {"2147483648", INT_MAX},
                                       {"-2147483649", INT_MIN},
                                       {"99999999999999999999", INT_MAX}};

TEST(WriteThrough, NumbersAreStoredAsWrittenAndReadUpToTheFirstOtherCharacter) {
  for (const Setting& setting : kSettings) {
    const std::string key = setting.key;
    const bool isZone = key == "DaylightSavingZoneIDDevice";  // its setter takes a number
    if (!isZone && key != "DateFormat" && key != "TimeFormat" && key != "DaylightSavingMinutes" &&
        key != "QexTimeSource")
      continue;
    for (const NumberText& row : kNumberTexts) {
      SettingsInMemory store;
      const auto settings = store.load();
      if (isZone) {
        store.put(key, row.text);
      } else {
        EXPECT_TRUE(setting.set(*settings, row.text)) << key << " \"" << row.text << "\"";
        EXPECT_EQ(setting.get(*settings), std::to_string(row.number)) << key << " " << row.text;
      }
      EXPECT_EQ(store.stored(key), row.text) << key << " \"" << row.text << "\"";
      EXPECT_EQ(setting.get(*store.load()), std::to_string(row.number))
          << key << " \"" << row.text << "\" after a restart";
    }
  }
}

}  // namespace
