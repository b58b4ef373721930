#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "ManageableData.h"
#include "MgmtAgentIfc.h"

namespace conformance {

// A record about one key, with a value if there is one.
inline ManageableData recordOf(const std::string& key) {
  ManageableData record;
  record.setRootId(key, nullptr);
  return record;
}
inline ManageableData recordOf(const std::string& key, const std::string& value) {
  ManageableData record = recordOf(key);
  record.populate(key, value);
  return record;
}

// An agent that records its calls as text, and answers them. Its notes are of any thread.
class RecordingAgent final : public MgmtAgentIfc {
 public:
  bool setData(ManageableData& record) override {
    note("set", record);
    return answer();
  }
  bool getData(ManageableData& record) override {
    note("get", record);
    const bool found = answer();
    if (found) record.populate(record.getRootId(), valueOf(record.getRootId()));
    return found;
  }
  void manageableDataChanged(ManageableData& record) override {
    note("changed", record);
    if (onChange) onChange(record);
  }
  bool resetUserData() override {
    note("reset", ManageableData());
    return answer();
  }

  // The calls since the last one of this.
  std::vector<std::string> takeNotes() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_notes, {});
  }
  // The threads of the calls.
  std::vector<std::thread::id> threads() {
    const std::lock_guard lock(m_mutex);
    return m_threads;
  }

  void note(const std::string& text) {
    const std::lock_guard lock(m_mutex);
    m_notes.push_back(text);
    m_threads.push_back(std::this_thread::get_id());
  }

  std::function<bool()> answer = [] { return true; };  // of set, get and reset
  std::function<std::string(const std::string& key)> valueOf = [](const std::string& key) {
    return "value of " + key;
  };
  std::function<void(ManageableData&)> onChange;

 private:
  void note(const std::string& what, const ManageableData& record) {
    std::string text = what;
    std::string value;
    if (!record.getRootId().empty()) text += " " + record.getRootId();
    if (record.interogate(record.getRootId(), value)) text += "=" + value;
    note(text);
  }

  std::mutex m_mutex;
  std::vector<std::string> m_notes;
  std::vector<std::thread::id> m_threads;
};

}  // namespace conformance
