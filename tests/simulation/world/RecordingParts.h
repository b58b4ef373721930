#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>

#include "ClockServiceObserverIfc.h"
#include "SecurityLogServiceIfc.h"
#include "platform/LogBook.h"
#include "services/LocalManagement.h"
#include "services/MemoryDataAccess.h"
#include "services/PhysicalInterface.h"
#include "simulation/Journal.h"

namespace simulation {

// The host's services, each writing down what the clock asks of it.

class RecordingManagement : public host::LocalManagement {
 public:
  explicit RecordingManagement(Journal& journal) : m_journal(journal) {}
  bool registerAgent(const std::string& agentId, MgmtAgentIfc* agent) override;
  bool setData(ManageableData& record) override;
  bool observeData(const std::string& key, MgmtAgentIfc* agent) override;
  bool reportDataChanged(ManageableData& record) override;
  void setItemState(ManageableData& record, int state) override;

 private:
  Journal& m_journal;
};

class RecordingPhysical : public host::PhysicalInterface {
 public:
  RecordingPhysical(Journal& journal, int variant)
      : PhysicalInterface(variant), m_journal(journal) {}
  void subscribe(physicalEventObserver* observer,
                 const std::vector<PhysDefs::SubscriptionGrp>& groups) override;
  void beginClockChange() override;
  void endClockChange() override;

 private:
  Journal& m_journal;
};

class RecordingSecurity : public Executable, public SecurityLogServiceIfc {
 public:
  explicit RecordingSecurity(Journal& journal) : m_journal(journal) {}
  void init(Context& context) override;
  void shutdown() override;
  void record(time_t time, int facility, int severity, int eventClass, int eventCode, bool failure,
              const std::string& text, const std::string& subject,
              const std::string& origin) override;

 private:
  Journal& m_journal;
};

// The store that outlives restarts, with faults to switch on. Thread: any.
class FaultyStore : public Executable, public host::DataAccess {
 public:
  explicit FaultyStore(Journal& journal) : m_journal(journal) {}
  void init(Context& context) override;
  void shutdown() override;
  bool setItem(const std::string& schema, const std::string& key,
               const std::string& value) override;
  std::optional<std::string> getItem(const std::string& schema, const std::string& key) override;

  // What somebody else writes.
  void putAside(const std::string& key, const std::string& value);

  std::atomic<bool> refuses{false};
  std::atomic<bool> silent{false};
  std::atomic<bool> powerless{false};  // the device is off: nothing is written any more

 private:
  Journal& m_journal;
  host::MemoryDataAccess m_items;
};

class RecordingObserver final : public ClockServiceObserverIfc {
 public:
  RecordingObserver(Journal& journal, std::string name)
      : m_journal(journal), m_name(std::move(name)) {}
  void timezoneChangeEvent(std::string timezone) override;
  void timeChangeEvent(int hours, int minutes, int seconds) override;
  void dateChangeEvent(int day, int month, int year) override;
  void alarmClockEvent(int alarm) override;

 private:
  Journal& m_journal;
  const std::string m_name;
};

// The clock's complaints and its lines for the system log.
class RecordingLog : public host::LogSink {
 public:
  explicit RecordingLog(Journal& journal) : m_journal(journal) {}
  void write(const host::LogEntry& entry) override;

 private:
  Journal& m_journal;
};

}  // namespace simulation
