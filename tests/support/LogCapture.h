#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "framework/ApplicationLog.h"

namespace support {

// Keeps what the process logs while the object exists, and sets the log level meanwhile.
// Thread: any.
class LogCapture {
 public:
  // onEntry: called with each entry, on the thread that logs, before it is kept.
  explicit LogCapture(int level = 6, std::function<void(const host::LogEntry&)> onEntry = {});
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  [[nodiscard]] std::vector<host::LogEntry> entries() const;
  void clear();

  // Whether, or how often, there is an entry with exactly this text.
  [[nodiscard]] bool has(const std::string& text) const;
  [[nodiscard]] bool has(int level, const std::string& text) const;
  [[nodiscard]] std::size_t count(const std::string& text) const;
  // Whether there is an entry with this text in it.
  [[nodiscard]] bool hasPart(const std::string& part) const;

  // Waits for an entry with this text in it; false when the limit has passed.
  [[nodiscard]] bool waitForPart(const std::string& part,
                                 std::chrono::seconds limit = std::chrono::seconds{10}) const;

  // All entries, one a line, for the messages of failed tests.
  [[nodiscard]] std::string text() const;

 private:
  class Sink;
  std::shared_ptr<Sink> m_sink;
  int m_levelBefore;
};

}  // namespace support
