#pragma once

#include <cstddef>
#include <ctime>
#include <mutex>
#include <string>
#include <vector>

#include "SecurityLogServiceIfc.h"
#include "support/Part.h"

namespace plugin {

// Keeps the records of the security log. Owner: the test. Thread: any.
class RecordingSecurityLog final : public support::Part, public SecurityLogServiceIfc {
 public:
  struct Record {
    time_t time;
    int facility, severity, eventClass, eventCode;
    bool failure;
    std::string text, subject, origin;
  };

  void record(time_t time, int facility, int severity, int eventClass, int eventCode, bool failure,
              const std::string& text, const std::string& subject,
              const std::string& origin) override {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_records.push_back(
        {time, facility, severity, eventClass, eventCode, failure, text, subject, origin});
  }

  [[nodiscard]] std::vector<Record> records() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_records;
  }

  void clear() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_records.clear();
  }

  [[nodiscard]] std::size_t count() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_records.size();
  }
  // REQUIRES: there is a record.
  [[nodiscard]] Record last() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_records.back();
  }

  // "accepted TEXT" or "refused TEXT" for each record.
  [[nodiscard]] std::vector<std::string> lines() const {
    std::vector<std::string> lines;
    for (const Record& record : records())
      lines.push_back((record.failure ? "refused " : "accepted ") + record.text);
    return lines;
  }

 private:
  mutable std::mutex m_mutex;
  std::vector<Record> m_records;
};

}  // namespace plugin
