#pragma once

#include <atomic>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "ClockServiceObserverIfc.h"
#include "DataStorage.h"
#include "ManageableData.h"
#include "SecurityLogServiceIfc.h"
#include "framework/ApplicationLog.h"
#include "plugin/Journal.h"
#include "services/LocalManagement.h"
#include "services/MemoryDataAccess.h"
#include "services/PhysicalInterface.h"
#include "simulation/Texts.h"
#include "support/FileContent.h"

namespace simulation {

// Services of the telephone's framework that record the clock's calls.

class RecordingManagement : public host::LocalManagement {
 public:
  explicit RecordingManagement(plugin::Journal& journal) : m_journal(journal) {}
  bool registerAgent(const std::string& agentId, MgmtAgentIfc* agent) override {
    m_journal.add("agent " + agentId);
    return LocalManagement::registerAgent(agentId, agent);
  }
  bool setData(ManageableData& record) override {
    m_journal.add("management " + keyAndValue(record));
    return LocalManagement::setData(record);
  }
  bool observeData(const std::string& key, MgmtAgentIfc* agent) override {
    m_journal.add("observes " + key);
    return LocalManagement::observeData(key, agent);
  }
  bool reportDataChanged(ManageableData& record) override {
    m_journal.add("report " + keyAndValue(record));
    return LocalManagement::reportDataChanged(record);
  }
  void setItemState(ManageableData& record, int state) override {
    m_journal.add("item " + record.getRootId() + " is " + std::to_string(state));
  }

 private:
  static std::string keyAndValue(ManageableData& record) {
    std::string value = "nothing";
    record.interogate(record.getRootId(), value);
    return record.getRootId() + "=" + value;
  }
  plugin::Journal& m_journal;
};

class RecordingPhysical : public host::PhysicalInterface {
 public:
  RecordingPhysical(plugin::Journal& journal, int variant)
      : PhysicalInterface(variant), m_journal(journal) {}
  void subscribe(physicalEventObserver* observer,
                 const std::vector<PhysDefs::SubscriptionGrp>& groups) override {
    for (const auto& [group] : groups)
      m_journal.add(print("subscribes to %d %d %d", group.kind, group.first, group.last));
    PhysicalInterface::subscribe(observer, groups);
  }
  void beginClockChange() override { m_journal.add("clock change begins"); }
  void endClockChange() override { m_journal.add("clock change ends"); }

 private:
  plugin::Journal& m_journal;
};

class RecordingSecurity : public Executable, public SecurityLogServiceIfc {
 public:
  explicit RecordingSecurity(plugin::Journal& journal) : m_journal(journal) {}
  void init(Context&) override {}
  void shutdown() override {}
  void record(time_t time, int facility, int severity, int eventClass, int eventCode, bool failure,
              const std::string& text, const std::string& subject,
              const std::string& origin) override {
    m_journal.add(print("security %lld %d %d %d %d %s ", static_cast<long long>(time), facility,
                        severity, eventClass, eventCode, failure ? "failed" : "done") +
                  text + " by \"" + subject + "\" from \"" + origin + "\"");
  }

 private:
  plugin::Journal& m_journal;
};

// The store, which survives restarts, with faults that can be switched on. Thread: any.
class RecordingStore : public host::MemoryDataAccess {
 public:
  explicit RecordingStore(plugin::Journal& journal) : m_journal(journal) {}
  bool setItem(const std::string& schema, const std::string& key,
               const std::string& value) override {
    if (powerless) return false;
    m_journal.add("store " + key + "=" + value + (refuses ? " refused" : ""));
    return !refuses && MemoryDataAccess::setItem(schema, key, value);
  }
  std::optional<std::string> getItem(const std::string& schema, const std::string& key) override {
    return silent ? std::nullopt : MemoryDataAccess::getItem(schema, key);
  }
  // Stores a value as another program would.
  void storeFromOutside(const std::string& key, const std::string& value) {
    static_cast<void>(MemoryDataAccess::setItem(DASUtilsStrings::ClockSettingsSchema, key, value));
  }

  std::atomic<bool> refuses{false};
  std::atomic<bool> silent{false};
  std::atomic<bool> powerless{false};  // the telephone is off: nothing is stored

 private:
  plugin::Journal& m_journal;
};

// The TZ of this process, and the content of the script (empty without one).
[[nodiscard]] inline std::string zoneInForce() {
  const char* const zone = std::getenv("TZ");  // NOLINT(concurrency-mt-unsafe): nothing else runs
  return zone == nullptr ? "(none)" : zone;
}
[[nodiscard]] inline std::string script() {
  return support::contentOf("state/setupTZ.sh");
}

// When observers get a new zone, TZ is set already, and the script still has the former zone.
class RecordingObserver final : public ClockServiceObserverIfc {
 public:
  RecordingObserver(plugin::Journal& journal, std::string name)
      : m_journal(journal), m_name(std::move(name)) {}
  void timezoneChangeEvent(std::string timezone) override {
    record("zone " + timezone + " in force: " + zoneInForce() + " after " + script());
  }
  void timeChangeEvent(int hours, int minutes, int seconds) override {
    record(print("time %d:%d:%d", hours, minutes, seconds));
  }
  void dateChangeEvent(int day, int month, int year) override {
    record(print("date %d.%d.%d", day, month, year));
  }
  void alarmClockEvent(int alarm) override { record(print("alarm %d", alarm)); }

 private:
  void record(const std::string& event) { m_journal.add(m_name + " gets " + event); }

  plugin::Journal& m_journal;
  const std::string m_name;
};

// The service's errors, and its lines for the system log.
class RecordingLog : public host::LogSink {
 public:
  explicit RecordingLog(plugin::Journal& journal) : m_journal(journal) {}
  void write(const host::LogEntry& entry) override {
    if (entry.systemLog) return m_journal.add("system log " + entry.text);
    if (entry.level <= 2 && entry.component.rfind("ClockService", 0) == 0)
      m_journal.add("log 2 " + entry.component + ": " + entry.text);
  }

 private:
  plugin::Journal& m_journal;
};

}  // namespace simulation
