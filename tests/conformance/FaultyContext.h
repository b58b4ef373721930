#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Context.h"
#include "Executable.h"
#include "LocalMgmtIfc.h"
#include "PhysicalInterfaceServiceIfc.h"
#include "SecurityLogServiceIfc.h"

namespace conformance {

// Passes a service's calls on, with the faults that are switched on. One for each service that the
// platform registers. The services outlive it.
class FaultyManagement final : public Executable, public LocalMgmtIfc {
 public:
  explicit FaultyManagement(LocalMgmtIfc& real) : m_real(real) {}
  void init(Context& /*context*/) override {}
  void shutdown() override {}
  bool registerAgent(const std::string& agentId, MgmtAgentIfc* agent) override;
  bool getData(ManageableData& record) override;
  bool setData(ManageableData& record) override;
  bool observeData(const std::string& key, MgmtAgentIfc* agent) override;
  bool reportDataChanged(ManageableData& record) override;
  bool isUserData(ManageableData& record, int user) override;
  void setItemState(ManageableData& record, int state) override;

 private:
  LocalMgmtIfc& m_real;
  MgmtAgentIfc* m_agent = nullptr;
  std::vector<std::string> m_observed;
};

class FaultyPhysical final : public Executable, public PhysicalInterfaceServiceIfc {
 public:
  explicit FaultyPhysical(PhysicalInterfaceServiceIfc& real) : m_real(real) {}
  void init(Context& /*context*/) override {}
  void shutdown() override {}
  PhysDefs::hardwareSubVariant getHardwareSubVariant() override;
  void subscribe(physicalEventObserver* observer,
                 const std::vector<PhysDefs::SubscriptionGrp>& groups) override;
  void beginClockChange() override { m_real.beginClockChange(); }
  void endClockChange() override { m_real.endClockChange(); }

 private:
  PhysicalInterfaceServiceIfc& m_real;
  int m_asked = 0;
};

class FaultySecurityLog final : public Executable, public SecurityLogServiceIfc {
 public:
  explicit FaultySecurityLog(SecurityLogServiceIfc& real) : m_real(real) {}
  void init(Context& /*context*/) override {}
  void shutdown() override {}
  void record(time_t time, int facility, int severity, int eventClass, int eventCode, bool failure,
              const std::string& text, const std::string& subject,
              const std::string& origin) override;

 private:
  SecurityLogServiceIfc& m_real;
};

// A context that passes its calls on, with the faults that are switched on. The real one outlives
// it.
class FaultyContext final : public Context {
 public:
  explicit FaultyContext(Context& real);
  ~FaultyContext();
  FaultyContext(const FaultyContext&) = delete;
  FaultyContext& operator=(const FaultyContext&) = delete;

  Executable* getService(const std::string& name) override;
  int createTimer(Executable& owner, unsigned int period) override;
  void startTimer(int timer) override;
  void stopTimer(int timer) override;
  void cancelTimer(int timer) override;
  void deleteTimer(int timer) override;

 private:
  // Starts a timer again that has expired, or calls its owner on another thread.
  class FaultyOwner;
  struct Wanted {
    Executable* owner;
    unsigned int period;
  };

  Context& m_real;
  std::map<std::string, std::unique_ptr<Executable>> m_services;
  std::vector<std::unique_ptr<FaultyOwner>> m_owners;
  std::map<int, Wanted> m_timers;
  std::map<int, bool> m_running;
};

}  // namespace conformance
