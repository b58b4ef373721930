#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "services/SqliteDataAccess.h"
#include "support/ErrorOf.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

namespace host {

inline constexpr const char* kSchema = "ClockSettings";
inline constexpr std::filesystem::perms kOwnerFile =
    std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;

// A folder for a settings store, and what the store logs.
class SettingsStore : public ::testing::Test {
 protected:
  std::filesystem::path file() const { return folder / SqliteDataAccess::kFileName; }
  std::filesystem::path aside(int number) const {
    return folder / ("settings.db.damaged-" + std::to_string(number));
  }
  std::string openingError() const {
    return errorOf([this] { const SqliteDataAccess store(folder.path()); });
  }
  void saveOne() const {
    SqliteDataAccess store(folder.path());
    ASSERT_TRUE(store.setItem(kSchema, "DateFormat", "2"));
  }

  support::TemporaryFolder folder;
  support::LogCapture log{4};  // without SQLite's own words
};

}  // namespace host
