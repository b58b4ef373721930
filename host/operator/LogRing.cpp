#include "operator/LogRing.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "operator/HostActions.h"
#include "remote/ControlChannel.h"
#include "verbs/TimeText.h"

namespace host {
namespace {

std::string textOf(const LogEntry& entry) {
  std::string text = entry.text;
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

}  // namespace

void LogRing::write(const LogEntry& entry) {
  const MutexLock lock(m_mutex);
  m_entries.push_back(entry);
  if (!m_followers.empty()) {
    const std::string json = jsonText(entryJson(m_entries.back()));
    std::erase_if(m_followers, [&](const auto& channel) { return !channel->item(json); });
  }
  if (m_entries.size() > kKept) m_entries.pop_front();
}

std::vector<Json> LogRing::entries() const {
  const MutexLock lock(m_mutex);
  return kept();
}

std::string LogRing::newestOf(const std::string& component) const {
  const MutexLock lock(m_mutex);
  const auto found = std::find_if(m_entries.rbegin(), m_entries.rend(), [&](const LogEntry& entry) {
    return entry.component == component;
  });
  return found == m_entries.rend() ? "" : textOf(*found);
}

void LogRing::follow(const std::shared_ptr<ControlChannel>& channel) {
  const MutexLock lock(m_mutex);
  for (const Json& entry : newestThatFit(kept())) {
    if (!channel->item(jsonText(entry))) return;
  }
  m_followers.push_back(channel);
}

std::vector<Json> LogRing::kept() const {
  std::vector<Json> entries;
  for (const LogEntry& entry : m_entries) entries.push_back(entryJson(entry));
  return entries;
}

void LogRing::unfollow(const ControlChannel* channel) {
  const MutexLock lock(m_mutex);
  std::erase_if(m_followers, [&](const auto& follower) { return follower.get() == channel; });
}

Json entryJson(const LogEntry& entry) {
  Json json = {{"number", entry.number}};
  json["time"] = instantText(std::chrono::duration_cast<std::chrono::seconds>(entry.wall));
  json["level"] = entry.level;
  json["component"] = entry.systemLog ? "syslog" : entry.component;
  json["text"] = textOf(entry);
  json["file"] = entry.file;
  json["line"] = entry.line;
  return json;
}

}  // namespace host
