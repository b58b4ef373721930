#include "ClockService/ManagedKeys.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "ClockService.h"
#include "ClockServiceDataHandler.h"
#include "DSTZoneRules.h"
#include "support/WaitingCall.h"
#include "unit/SettingsInMemory.h"

namespace {

using namespace std::string_literals;

// In the document a section "## KEY" has a line that says so when the key cannot be set.
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
  EXPECT_EQ(served.size(), 16U);
  EXPECT_EQ(served, documented);
}

TEST(ManagedKeys, FindIsExact) {
  for (const ManagedKeys::Row& row : ManagedKeys::rows())
    EXPECT_EQ(ManagedKeys::find(row.name), &row) << row.name;
  for (const std::string& key :
       {""s, "Time"s, "TIME"s, "tim"s, "time "s, " time"s, "time\0"s, "daylight-save-zone"s,
        "last-restart-date"s, "mobility-user-data-update"s, "interface-status"s, "dhcp-enabled"s,
        "mac-addr"s, std::string(1 << 20, 'x')})
    EXPECT_EQ(ManagedKeys::find(key), nullptr) << "\"" << key.substr(0, 40) << "\"";
}

TEST(ManagedKeys, AreReadAndSetUnderTheLockOfTheirTexts) {
  unit::SettingsInMemory store;
  const auto settings = store.load();
  ClockService clock;
  const DSTZoneRules zones;
  const ManagedKeys keys({clock, *settings, zones, nullptr});
  const std::function<void()> calls[] = {
      [&] { EXPECT_EQ(keys.get("ntp-secret"), ""); },
      [&] { EXPECT_EQ(keys.set("ntp-secret", "x"), true); },
      [&] { EXPECT_EQ(keys.set("sntp-addr", "192.0.2.1"), true); },
      [&] { settings->reinitialiseData(true); }};
  for (const auto& call : calls) {
    ASSERT_TRUE(settings->textLock.take(-1));
    const support::WaitingCall other(call);
    EXPECT_TRUE(other.waits());
    settings->textLock.give();
  }
}

}  // namespace
