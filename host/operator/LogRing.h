#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "base/Mutex.h"
#include "framework/ApplicationLog.h"
#include "verbs/Json.h"

namespace host {

class ControlChannel;

// The newest entries of the application log, which bounds their texts, and the clients that follow
// it. Owner: shared by the application log and the controller. Thread: any. Failure: a client that
// is gone or does not read is removed.
class LogRing : public LogSink {
 public:
  static constexpr std::size_t kKept = 1000;

  void write(const LogEntry& entry) override;

  [[nodiscard]] std::vector<Json> entries() const;  // oldest first, as entryJson

  // The text of the newest entry of the component; empty if there is none.
  [[nodiscard]] std::string newestOf(const std::string& component) const;

  // Sends the channel, as items, the latest entries that fit into a reply, and from now on each new
  // entry.
  void follow(const std::shared_ptr<ControlChannel>& channel);
  void unfollow(const ControlChannel* channel);

 private:
  [[nodiscard]] std::vector<Json> kept() const CLOCK_REQUIRES(m_mutex);

  mutable Mutex m_mutex;
  std::deque<LogEntry> m_entries CLOCK_GUARDED_BY(m_mutex);
  std::vector<std::shared_ptr<ControlChannel>> m_followers CLOCK_GUARDED_BY(m_mutex);
};

// {"number", "time", "level", "component", "text", "file", "line"}
[[nodiscard]] Json entryJson(const LogEntry& entry);

}  // namespace host
