#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "services/SettingsDatabase.h"
#include "support/ErrorOf.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

namespace host {

inline constexpr const char* kSchema = "ClockSettings";
inline constexpr std::filesystem::perms kOwnerFile =
    std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;

// A folder for a settings database, and the application log meanwhile.
class StoredSettings : public ::testing::Test {
 protected:
  std::filesystem::path file() const { return folder / SettingsDatabase::kFileName; }
  std::filesystem::path aside(int number) const {
    return folder / ("settings.db.damaged-" + std::to_string(number));
  }
  std::string openingError() const {
    return errorOf([this] { const SettingsDatabase store(folder.path()); });
  }
  void saveOne() const {
    SettingsDatabase store(folder.path());
    ASSERT_TRUE(store.setItem(kSchema, "DateFormat", "2"));
  }

  support::TemporaryFolder folder;
  support::LogCapture log{4};  // without SQLite's own messages
};

}  // namespace host
