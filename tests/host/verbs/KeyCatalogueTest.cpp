#include "verbs/KeyCatalogue.h"
#include "verbs/NamedRows.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "support/FileContent.h"

namespace host {
namespace {

TEST(KeyCatalogue, HasSixteenKeysTwoOfThemReadOnly) {
  const auto names = namesOf(managementKeys());
  EXPECT_EQ(names.size(), 16U);
  EXPECT_EQ(std::set(names.begin(), names.end()).size(), 16U);
  std::set<std::string_view> fixed;
  for (const ManagementKey& row : managementKeys()) {
    if (!row.settable) fixed.insert(row.name);
  }
  EXPECT_EQ(fixed,
            (std::set<std::string_view>{"daylight-save-zone-list", "daylight-save-zone-text"}));
}

TEST(KeyCatalogue, DescribesEachSettableKey) {
  for (const ManagementKey& row : managementKeys()) {
    EXPECT_EQ(row.values.empty(), !row.settable) << row.name;
    EXPECT_EQ(row.effect.empty(), !row.settable) << row.name;
    EXPECT_EQ(row.example.empty(), !row.settable) << row.name;
    EXPECT_EQ(rowNamed(managementKeys(), row.name), &row) << row.name;
  }
  EXPECT_EQ(rowNamed(managementKeys(), "Time"), nullptr);
}

TEST(ManagementKeyDocument, HasAnExampleOfEachKey) {
  const std::string document = managementKeysDocument();
  for (const ManagementKey& row : managementKeys()) {
    const std::string key(row.name);
    const std::string command =
        row.settable ? "set " + key + ' ' + std::string(row.example) : "get " + key;
    EXPECT_NE(document.find("- example: `clockctl " + command + "`\n"), std::string::npos) << key;
  }
}

TEST(KeyCatalogue, IsWhatTheDocumentSays) {
  const std::string document = support::contentOf(MANAGEMENT_KEYS_DOCUMENT);
  EXPECT_EQ(document, managementKeysDocument())
      << "replace docs/reference/management-keys.md by the expected text";
}

}  // namespace
}  // namespace host
