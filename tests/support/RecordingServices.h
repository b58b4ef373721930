#pragma once

#include <atomic>
#include <cstddef>
#include <ctime>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "SecurityLogServiceIfc.h"
#include "services/LocalManagement.h"
#include "services/MemoryDataAccess.h"
#include "services/PhysicalInterface.h"
#include "support/Journal.h"
#include "support/Part.h"

// The host's services of the device, which also record each call of the clock in a journal.
// Owner: the test. Thread: any.
namespace support {

// Whether the queries of a service are recorded, too.
enum class Queries { recorded, notRecorded };

class RecordingPhysical final : public host::PhysicalInterface {
 public:
  RecordingPhysical(Journal& journal, int variant, Queries queries = Queries::recorded)
      : PhysicalInterface(variant), m_journal(journal), m_queries(queries) {}
  PhysDefs::hardwareSubVariant getHardwareSubVariant() override;
  void subscribe(physicalEventObserver* observer,
                 const std::vector<PhysDefs::SubscriptionGrp>& groups) override;
  void beginClockChange() override { m_journal.add("begin clock change"); }
  void endClockChange() override { m_journal.add("end clock change"); }

 private:
  Journal& m_journal;
  const Queries m_queries;
};

class RecordingManagement final : public host::LocalManagement {
 public:
  explicit RecordingManagement(Journal& journal, Queries queries = Queries::recorded)
      : m_journal(journal), m_queries(queries) {}
  bool registerAgent(const std::string& agentId, MgmtAgentIfc* newAgent) override;
  bool getData(ManageableData& record) override;
  bool setData(ManageableData& record) override;
  bool observeData(const std::string& key, MgmtAgentIfc* newAgent) override;
  bool reportDataChanged(ManageableData& record) override;
  bool isUserData(ManageableData& record, int user) override;
  void setItemState(ManageableData& record, int state) override;

  MgmtAgentIfc* agent = nullptr;
  bool acceptSets = true;
  std::map<std::string, bool> acceptReports;  // by key; true for other keys

 private:
  Journal& m_journal;
  const Queries m_queries;
};

// The settings, with faults that can be switched on.
class RecordingStore final : public host::MemoryDataAccess {
 public:
  explicit RecordingStore(Journal& journal) : m_journal(journal) {}
  bool setItem(const std::string& schema, const std::string& key,
               const std::string& value) override;
  std::optional<std::string> getItem(const std::string& schema, const std::string& key) override;

  // Stores a value without a record in the journal, as another program would.
  void put(const std::string& key, const std::string& value);
  // The stored value, or "(none)".
  std::string stored(const std::string& key);

  std::atomic<bool> refuses{false};
  std::atomic<bool> silent{false};     // has no value for any key
  std::atomic<bool> powerless{false};  // the telephone is off: nothing is stored or recorded
  std::function<void(const std::string& key)> onSet;  // called before it is stored

 private:
  Journal& m_journal;
};

// Keeps the records of the security log.
class RecordingSecurityLog final : public Part, public SecurityLogServiceIfc {
 public:
  struct Record {
    time_t time;
    int facility, severity, eventClass, eventCode;
    bool failure;
    std::string text, subject, origin;
  };

  void record(time_t time, int facility, int severity, int eventClass, int eventCode, bool failure,
              const std::string& text, const std::string& subject,
              const std::string& origin) override;

  [[nodiscard]] std::vector<Record> records() const;
  [[nodiscard]] std::size_t count() const { return records().size(); }
  [[nodiscard]] Record last() const { return records().back(); }  // REQUIRES: there is a record
  void clear();

  // "accepted TEXT" or "refused TEXT" for each record.
  [[nodiscard]] std::vector<std::string> lines() const;

  std::function<void(const Record&)> onRecord;

 private:
  mutable std::mutex m_mutex;
  std::vector<Record> m_records;
};

}  // namespace support
