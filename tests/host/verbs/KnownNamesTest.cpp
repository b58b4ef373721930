#include "verbs/KnownNames.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>

#include "support/FileContent.h"
#include "verbs/KeyCatalogue.h"
#include "verbs/NamedRows.h"

namespace host {
namespace {

// The texts in quotes of one of the service's headers.
std::set<std::string> namesIn(const std::string& header) {
  const std::string text = support::contentOf(std::filesystem::path(CLOCK_TREE) / "src" / header);
  const std::regex quoted("\"([\\w-]+)\";");
  std::set<std::string> names;
  for (std::sregex_iterator at(text.begin(), text.end(), quoted), end; at != end; ++at) {
    names.insert((*at)[1]);
  }
  return names;
}

std::set<std::string> setOf(std::span<const std::string_view> names) {
  return {names.begin(), names.end()};
}

TEST(KnownNames, AreThoseOfTheService) {
  EXPECT_EQ(setOf(storageKeys()), namesIn("SettingKeys.h"));
  std::set<std::string> keys = setOf(namesOf(managementKeys()));
  keys.merge(setOf(deviceValues()));
  EXPECT_EQ(keys, namesIn("ClockService/ManagementKeyNames.h"));
}

}  // namespace
}  // namespace host
