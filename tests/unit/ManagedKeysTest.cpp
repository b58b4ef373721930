#include "ClockService/ManagedKeys.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

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

}  // namespace
