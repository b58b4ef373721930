#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/Mutex.h"
#include "framework/ApplicationLog.h"
#include "verbs/Json.h"

namespace host {

class ControlChannel;

// The clients that follow the application log. Owner: shared by the application log and the
// controller. Thread: any. Failure: a client that is gone or does not read is removed.
class LogFollowers : public LogSink {
 public:
  LogFollowers() { takeUpTo(-1); }
  void write(const LogEntry& entry) override;

  // Sends the channel, as items, the latest kept entries that fit into a reply, and from now on
  // each new entry; both up to the level.
  void add(const std::shared_ptr<ControlChannel>& channel, int level);
  void remove(const ControlChannel* channel);

 private:
  struct Follower {
    std::shared_ptr<ControlChannel> channel;
    int level;
  };

  void updateLevel() CLOCK_REQUIRES(m_mutex);

  Mutex m_mutex;  // taken after the application log's
  std::vector<Follower> m_followers CLOCK_GUARDED_BY(m_mutex);
};

// The kept entries up to the level as entryJson, oldest first.
[[nodiscard]] std::vector<Json> keptLog(int level);

// The same that were written within a remote call of the origin.
[[nodiscard]] std::vector<Json> logOfCall(const std::string& origin, std::uint32_t call);

// {"number", "time", "level", "component", "text", "file", "line"}
[[nodiscard]] Json entryJson(const LogEntry& entry);

// The text without final line feeds.
[[nodiscard]] std::string lineOf(const LogEntry& entry);

}  // namespace host
