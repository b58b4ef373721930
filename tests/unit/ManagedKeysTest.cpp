#include "ClockService/ManagedKeys.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

// What is to follow a successful set.
enum Follow { nothing, clientRestart, zoneRefresh };

struct KeyRow {
  const char* name;
  bool settable;
  Follow follow;
};

constexpr std::array<KeyRow, 16> kKeyRows{{
    {"time", true, nothing},
    {"simple-time", true, nothing},
    {"simple-date", true, nothing},
    {"date-format", true, nothing},
    {"time-format", true, nothing},
    {"sntp-addr", true, clientRestart},
    {"ntp-secret", true, clientRestart},
    {"sntp-tz-offset", true, zoneRefresh},
    {"daylight-save", true, zoneRefresh},
    {"daylight-save-minutes", true, zoneRefresh},
    {"time-source", true, zoneRefresh},
    {"daylight-save-zone-list", false, nothing},
    {"daylight-save-zone-index", true, zoneRefresh},
    {"daylight-save-zone-text", false, nothing},
    {"daylight-save-zone-id", true, zoneRefresh},
    {"auto-daylight-save", true, zoneRefresh},
}};

const ManagedKeys::Row& entry(const char* name) {
  const ManagedKeys::Row* const key = ManagedKeys::find(name);
  if (key == nullptr) throw std::out_of_range(name);
  return *key;
}

TEST(ManagedKeys, TableHasTheSixteenKeysInOrder) {
  ASSERT_EQ(ManagedKeys::rows().size(), kKeyRows.size());
  for (std::size_t i = 0; i < kKeyRows.size(); ++i)
    EXPECT_STREQ(ManagedKeys::rows()[i].name, kKeyRows[i].name) << "row " << i;
}

// The document's sections: "## KEY", and a line that says so when the key cannot be set.
TEST(ManagedKeys, TableHasTheKeysOfTheDocumentInItsOrderAndAsSettableAsThere) {
  std::ifstream document(MANAGEMENT_KEYS_DOCUMENT);
  std::vector<std::pair<std::string, bool>> documented;
  for (std::string line; std::getline(document, line);) {
    if (line.rfind("## ", 0) == 0) documented.emplace_back(line.substr(3), true);
    if (line == "- set: always refused") documented.back().second = false;
  }
  std::vector<std::pair<std::string, bool>> served;
  for (const ManagedKeys::Row& key : ManagedKeys::rows())
    served.emplace_back(key.name, key.set != nullptr);
  EXPECT_EQ(served, documented);
}

TEST(ManagedKeys, EveryKeyCanBeRead) {
  for (const ManagedKeys::Row& key : ManagedKeys::rows()) EXPECT_NE(key.get, nullptr) << key.name;
}

TEST(ManagedKeys, ListAndTextOfZonesCannotBeSet) {
  for (const KeyRow& row : kKeyRows)
    EXPECT_EQ(entry(row.name).set != nullptr, row.settable) << row.name;
}

TEST(ManagedKeys, ServerKeysRestartTheClientAndZoneKeysRefreshTheZone) {
  const auto restart = entry("sntp-addr").afterSuccess;
  const auto refresh = entry("sntp-tz-offset").afterSuccess;
  ASSERT_NE(restart, nullptr);
  ASSERT_NE(refresh, nullptr);
  ASSERT_NE(restart, refresh);
  const std::array<decltype(restart), 3> actions{nullptr, restart, refresh};
  for (const KeyRow& row : kKeyRows)
    EXPECT_EQ(entry(row.name).afterSuccess, actions[row.follow]) << row.name;
}

TEST(ManagedKeys, OnlyTheServerAddressHasAnEffectWhenRefused) {
  for (const KeyRow& row : kKeyRows)
    EXPECT_EQ(entry(row.name).always != nullptr, std::string(row.name) == "sntp-addr") << row.name;
}

TEST(ManagedKeys, FindGivesTheRowOfTheKey) {
  for (std::size_t i = 0; i < kKeyRows.size(); ++i)
    EXPECT_EQ(ManagedKeys::find(kKeyRows[i].name), &ManagedKeys::rows()[i]) << kKeyRows[i].name;
}

TEST(ManagedKeys, FindIsExact) {
  for (const std::string& key :
       {std::string(), std::string("Time"), std::string("TIME"), std::string("tim"),
        std::string("time "), std::string(" time"), std::string("time\0", 5),
        std::string("daylight-save-zone"), std::string("last-restart-date"),
        std::string("mobility-user-data-update"), std::string("interface-status"),
        std::string("dhcp-enabled"), std::string("mac-addr"), std::string(1 << 20, 'x')})
    EXPECT_EQ(ManagedKeys::find(key), nullptr) << "\"" << key.substr(0, 40) << "\"";
}

}  // namespace
