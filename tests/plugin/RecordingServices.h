#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "LocalMgmtIfc.h"
#include "PhysicalInterfaceServiceIfc.h"
#include "framework/DataAccess.h"
#include "plugin/Journal.h"
#include "support/Part.h"

// Services of the device that record each call in a journal. Owner: the test. Thread: any.
namespace plugin {

class RecordingPhysical final : public support::Part, public PhysicalInterfaceServiceIfc {
 public:
  RecordingPhysical(Journal& journal, int variant) : m_journal(journal), m_variant(variant) {}
  PhysDefs::hardwareSubVariant getHardwareSubVariant() override;
  void subscribe(physicalEventObserver* observer,
                 const std::vector<PhysDefs::SubscriptionGrp>& groups) override;
  void beginClockChange() override { m_journal.add("begin clock change"); }
  void endClockChange() override { m_journal.add("end clock change"); }

  physicalEventObserver* subscriber = nullptr;

 private:
  Journal& m_journal;
  const int m_variant;
};

class RecordingManagement final : public support::Part, public LocalMgmtIfc {
 public:
  explicit RecordingManagement(Journal& journal) : m_journal(journal) {}
  bool registerAgent(const std::string& agentId, MgmtAgentIfc* newAgent) override;
  bool getData(ManageableData& record) override;
  bool setData(ManageableData& record) override;
  bool observeData(const std::string& key, MgmtAgentIfc* newAgent) override;
  bool reportDataChanged(ManageableData& record) override;
  bool isUserData(ManageableData& record, int user) override;
  void setItemState(ManageableData& record, int state) override;

  std::map<std::string, std::string> values;
  MgmtAgentIfc* agent = nullptr;
  bool acceptSets = true;
  std::map<std::string, bool> userData;       // by key; true for other keys
  std::map<std::string, bool> acceptReports;  // likewise

 private:
  Journal& m_journal;
};

class RecordingStore final : public support::Part, public host::DataAccess {
 public:
  explicit RecordingStore(Journal& journal) : m_journal(journal) {}
  bool setItem(const std::string& schema, const std::string& key,
               const std::string& value) override;
  std::optional<std::string> getItem(const std::string& schema, const std::string& key) override;

  std::map<std::string, std::string> items;
  bool acceptSets = true;
  std::function<void(const std::string& key)> onSet;  // called before it is stored

 private:
  Journal& m_journal;
};

}  // namespace plugin
