#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>

#include "services/SecurityLog.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

namespace host {

// An accepted management set.
inline void record(SecurityLog& log, const std::string& text) {
  log.record(1, 4, 1, 5, 3, false, text, "", "");
}

// The fields that the caller of record() passed.
inline auto fieldsOf(const SecurityRecord& record) {
  return std::tuple(record.time, record.facility, record.severity, record.eventClass,
                    record.eventCode, record.failure, record.text, record.subject, record.origin);
}

// A folder for a security log, and the application log meanwhile.
class SecurityLogFile : public ::testing::Test {
 protected:
  std::filesystem::path file() const { return folder / SecurityLog::kFileName; }

  support::TemporaryFolder folder;
  support::LogCapture log{4};  // without SQLite's own messages
};

}  // namespace host
