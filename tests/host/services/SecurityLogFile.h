#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "services/SecurityLog.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

namespace host {

// An accepted management set.
inline void record(SecurityLog& log, const std::string& text) {
  log.record(1, 4, 1, 5, 3, false, text, "", "");
}

// A folder for a security log, and what the log's store logs.
class SecurityLogFile : public ::testing::Test {
 protected:
  std::filesystem::path file() const { return folder / SecurityLog::kFileName; }

  support::TemporaryFolder folder;
  support::LogCapture log{4};  // without SQLite's own words
};

}  // namespace host
