#include "operator/LogFollowers.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "operator/HostActions.h"
#include "remote/ControlChannel.h"
#include "verbs/TimeText.h"

namespace host {
namespace {

std::vector<Json> rowsOf(const std::vector<LogEntry>& entries, int level) {
  std::vector<Json> rows;
  for (const LogEntry& entry : entries) {
    if (entry.level <= level) rows.push_back(entryJson(entry));
  }
  return rows;
}

bool send(ControlChannel& channel, const Json& rows) {
  return std::all_of(rows.begin(), rows.end(),
                     [&](const Json& row) { return channel.item(jsonText(row)); });
}

}  // namespace

void LogFollowers::write(const LogEntry& entry) {
  const std::string json = jsonText(entryJson(entry));
  const MutexLock lock(m_mutex);
  std::erase_if(m_followers, [&](const Follower& follower) {
    return entry.level <= follower.level && !follower.channel->item(json);
  });
  updateLevel();
}

// The kept entries are sent without delaying those who log; then those that came meanwhile.
void LogFollowers::add(const std::shared_ptr<ControlChannel>& channel, int level) {
  const ApplicationLog& log = ApplicationLog::instance();
  const std::vector<LogEntry> kept = log.kept();
  if (!send(*channel, newestThatFit(rowsOf(kept, level)))) return;
  log.withKept(kept.empty() ? 0 : kept.back().number, [&](const std::vector<LogEntry>& newer) {
    if (!send(*channel, rowsOf(newer, level))) return;
    const MutexLock lock(m_mutex);
    m_followers.push_back({channel, level});
    updateLevel();
  });
}

void LogFollowers::remove(const ControlChannel* channel) {
  const MutexLock lock(m_mutex);
  std::erase_if(m_followers,
                [&](const Follower& follower) { return follower.channel.get() == channel; });
  updateLevel();
}

void LogFollowers::updateLevel() {
  int level = -1;
  for (const Follower& follower : m_followers) level = std::max(level, follower.level);
  takeUpTo(level);
}

std::vector<Json> keptLog(int level) {
  return rowsOf(ApplicationLog::instance().kept(), level);
}

std::vector<Json> logOfCall(const std::string& origin, std::uint32_t call) {
  std::vector<Json> rows;
  for (const LogEntry& entry : ApplicationLog::instance().kept()) {
    if (entry.call == call && entry.origin == origin) rows.push_back(entryJson(entry));
  }
  return rows;
}

std::string lineOf(const LogEntry& entry) {
  return entry.text.substr(0, entry.text.find_last_not_of('\n') + 1);
}

Json entryJson(const LogEntry& entry) {
  Json json = {{"number", entry.number}};
  json["time"] = instantText(std::chrono::duration_cast<std::chrono::seconds>(entry.wall));
  json["level"] = entry.level;
  json["component"] = entry.systemLog ? "syslog" : entry.component;
  json["text"] = lineOf(entry);
  json["file"] = entry.file;
  json["line"] = entry.line;
  return json;
}

}  // namespace host
