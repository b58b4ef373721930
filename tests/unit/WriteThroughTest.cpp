// The rule of every setter of ClockServiceDataHandler: write the store first, and memory only when
// the store accepted.

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ClockServiceDataHandler.h"
#include "unit/SettingsStore.h"

namespace {

using unit::SettingsStore;
using Handler = ClockServiceDataHandler;

// One row for each setting that can be written as text: how, under which key, and how it is seen.
struct Setting {
  const char* key;
  std::function<bool(Handler&, const std::string&)> set;
  std::function<std::string(const Handler&)> get;
  const char* value;
  const char* seen;
};

std::string flag(bool value) {
  return value ? "true" : "false";
}

const std::vector<Setting>& settingsTable() {
  static const std::vector<Setting> table{
      {"FallbackDateTime", [](Handler& h, const std::string& v) { return h.setFallbackTime(v); },
       [](const Handler& h) { return h.getFallbackTime(); }, "2026-11-20T10:11:12+00:00",
       "2026-11-20T10:11:12+00:00"},
      {"DateFormat", [](Handler& h, const std::string& v) { return h.setDateFormat(v); },
       [](const Handler& h) { return std::to_string(h.getDateFormat()); }, "1", "1"},
      {"TimeFormat", [](Handler& h, const std::string& v) { return h.setTimeFormat(v); },
       [](const Handler& h) { return std::to_string(h.getTimeFormat()); }, "5", "5"},
      {"SNTPaddress", [](Handler& h, const std::string& v) { return h.setSntpAddr(v); },
       [](const Handler& h) { return h.getSntpAddr(); }, "time.example.com", "time.example.com"},
      {"NTPsharedSecret", [](Handler& h, const std::string& v) { return h.setNtpSecret(v); },
       [](const Handler& h) { return h.getNtpSecret(); }, "s3cret", "s3cret"},
      {"TimezoneOffset",
       [](Handler& h, const std::string& v) {
         std::string reason;
         return h.setTimezoneOffset(v, reason);
       },
       [](const Handler& h) { return h.getTimezoneOffsetStr(); }, "5.75", "5.75"},
      {"DaylightSavingActive",
       [](Handler& h, const std::string& v) { return h.setDaylightSavingActive(v); },
       [](const Handler& h) { return flag(h.getDaylightSavingActive()); }, "true", "true"},
      {"DaylightSavingMinutes",
       [](Handler& h, const std::string& v) { return h.setDaylightSavingMinutes(v); },
       [](const Handler& h) { return std::to_string(h.getDaylightSavingMinutes()); }, "30", "30"},
      {"QexTimeSource", [](Handler& h, const std::string& v) { return h.setTimeSource(v); },
       [](const Handler& h) { return std::to_string(h.getTimeSource()); }, "2", "2"},
      {"DaylightSavingZoneIDDevice",
       [](Handler& h, const std::string& v) { return h.setDSTZoneID(std::stoi(v)); },
       [](const Handler& h) { return std::to_string(h.getDSTZoneID()); }, "9", "9"},
      {"AutoDaylightSavingEnabledDevice",
       [](Handler& h, const std::string& v) { return h.setAutomaticDaylightSavingActive(v); },
       [](const Handler& h) { return flag(h.getAutomaticDaylightSavingActive()); }, "true", "true"},
  };
  return table;
}

TEST(WriteThrough, AcceptedValueIsStoredAndInForce) {
  for (const Setting& setting : settingsTable()) {
    SettingsStore store;
    const auto settings = store.load();
    EXPECT_TRUE(setting.set(*settings, setting.value)) << setting.key;
    EXPECT_EQ(setting.get(*settings), setting.seen) << setting.key;
    EXPECT_EQ(store.stored(setting.key), setting.value) << setting.key;
    EXPECT_EQ(store.writes(), 1U) << setting.key;
  }
}

TEST(WriteThrough, StoredValueIsThereAfterARestart) {
  for (const Setting& setting : settingsTable()) {
    SettingsStore store;
    EXPECT_TRUE(setting.set(*store.load(), setting.value)) << setting.key;
    EXPECT_EQ(setting.get(*store.load()), setting.seen) << setting.key;
  }
}

TEST(WriteThrough, AllSettingsTogetherAreThereAfterARestart) {
  SettingsStore store;
  const auto settings = store.load(3);
  for (const Setting& setting : settingsTable())
    EXPECT_TRUE(setting.set(*settings, setting.value)) << setting.key;
  const auto again = store.load(3);
  for (const Setting& setting : settingsTable())
    EXPECT_EQ(setting.get(*again), setting.seen) << setting.key;
}

TEST(WriteThrough, RefusedWriteLeavesMemoryAndStoreAlone) {
  for (const Setting& setting : settingsTable()) {
    SettingsStore store;
    const auto settings = store.load();
    const std::string before = setting.get(*settings);
    store.refuseWrites(1);
    EXPECT_FALSE(setting.set(*settings, setting.value)) << setting.key;
    EXPECT_EQ(setting.get(*settings), before) << setting.key;
    EXPECT_EQ(store.stored(setting.key), std::nullopt) << setting.key;
    EXPECT_EQ(store.writes(), 1U) << setting.key;
    EXPECT_TRUE(setting.set(*settings, setting.value)) << setting.key;
    EXPECT_EQ(setting.get(*settings), setting.seen) << setting.key;
  }
}

TEST(WriteThrough, OneSettingLeavesTheOthersAlone) {
  for (const Setting& changed : settingsTable()) {
    SettingsStore store;
    const auto fresh = store.load();
    const auto settings = store.load();
    EXPECT_TRUE(changed.set(*settings, changed.value)) << changed.key;
    for (const Setting& setting : settingsTable())
      if (&setting != &changed) {
        EXPECT_EQ(setting.get(*settings), setting.get(*fresh))
            << setting.key << " after a change of " << changed.key;
      }
  }
}

TEST(WriteThrough, NumbersAreStoredAsWrittenAndReadAsFarAsTheyGo) {
  const struct {
    const char* text;
    int number;
  } table[] = {{"7", 7},
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
  for (const Setting& setting : settingsTable()) {
    const std::string key = setting.key;
    if (key != "DateFormat" && key != "TimeFormat" && key != "DaylightSavingMinutes" &&
        key != "QexTimeSource")
      continue;
    for (const auto& row : table) {
      SettingsStore store;
      const auto settings = store.load();
      EXPECT_TRUE(setting.set(*settings, row.text)) << key << " \"" << row.text << "\"";
      EXPECT_EQ(setting.get(*settings), std::to_string(row.number))
          << key << " \"" << row.text << "\"";
      EXPECT_EQ(store.stored(key), row.text) << key << " \"" << row.text << "\"";
      EXPECT_EQ(setting.get(*store.load()), std::to_string(row.number))
          << key << " \"" << row.text << "\" after a restart";
    }
  }
}

}  // namespace
