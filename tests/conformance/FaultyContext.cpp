#include "conformance/FaultyContext.h"

#include <algorithm>
#include <stdexcept>
#include <thread>

#include "ManageableData.h"
#include "MgmtAgentIfc.h"
#include "conformance/Violation.h"
#include "physicalEventObserver.h"

namespace conformance {
namespace {

const Violation kNoAgents("LocalMgmtIfcPromise.ReachesTheAgent", "no agent is registered");
const Violation kNoValue("LocalMgmtIfcPromise.ReadsADeviceValueIntoTheRecord",
                         "getData does not fill the record");
const Violation kSaysWritten("LocalMgmtIfcPromise.RefusesToWriteNothing",
                             "setData hides a refusal");
const Violation kOneId("LocalMgmtIfcPromise.AnAgentOfAnotherIdDoesNotReplaceIt",
                       "the agent's id is ignored");
const Violation kFirstAgent("LocalMgmtIfcPromise.ALaterAgentReplacesIt", "the first agent stays");
const Violation kAnyValue("LocalMgmtIfcPromise.HasNoOtherDeviceValues",
                          "a value that the device does not hold is empty");
const Violation kCallsBack("LocalMgmtIfcPromise.NoOperationCallsBack",
                           "setData calls the observer before it returns");
const Violation kWritesNothing("LocalMgmtIfcPromise.WritesADeviceValue", "setData writes nothing");
const Violation kOneObserver("LocalMgmtIfcPromise.ObserversHearOfEachChangeOfTheirKey",
                             "a key has one observer only");
const Violation kReportLost("LocalMgmtIfcPromise.AgentsReportChanges", "a report is lost");
const Violation kAllUserData("LocalMgmtIfcPromise.KnowsWhatIsUserData",
                             "every item counts as user data");
const Violation kNoState("LocalMgmtIfcPromise.KeepsTheItemStates", "the item state is ignored");
const Violation kOwnThread("MgmtAgentIfcPromise.IsCalledOnOneThread",
                           "changes reach the agent on the thread of their cause");

const Violation kVariantMoves("PhysicalInterfaceServiceIfcPromise.TheVariantIsFixed",
                              "the variant changes");
const Violation kAllEvents("PhysicalInterfaceServiceIfcPromise.SubscribersReceiveNoOtherEvents",
                           "subscribers receive all events");
const Violation kNoEvents("PhysicalInterfaceServiceIfcPromise.SubscribersReceiveTheirEvents",
                          "subscribers receive no events");
const Violation kTwoSubscriptions("PhysicalEventObserverPromise.HearsOfItsSubscription",
                                  "the observer is called twice at its subscription");

const Violation kNoSubject("SecurityLogServiceIfcPromise.KeepsAllFields", "the subject is lost");
const Violation kFailuresOnly("ManagementAcceptance.EachSetIsInTheSecurityLog",
                              "the security log keeps failures only");

const Violation kAnyService("ContextPromise.FindsTheServicesByName",
                            "an unknown name gives another service");
const Violation kWrongService("ContextPromise.ServicesHaveTheirInterfaces",
                              "a name gives another service");
const Violation kLate("YearAcceptance.EachHourIsAnnouncedOnce", "long timers expire a second late");
const Violation kArmed("ContextPromise.CreatesTimersStopped", "a new timer is running");
const Violation kPeriodic("ContextPromise.TimersExpireOnce", "timers are periodic");
const Violation kFirstOwner("ContextPromise.TimersExpireAtTheirOwners",
                            "timers expire at the first owner");
const Violation kOffThread("ContextPromise.TimersExpireOnTheFrameworkThread",
                           "timers expire on a thread of their own");
const Violation kSeconds("ContextPromise.PeriodsAreMilliseconds",
                         "periods are rounded to whole seconds");
const Violation kSigned("ContextPromise.PeriodsMayBeLong", "long periods are clipped");
const Violation kReused("ContextPromise.IdsArePositiveAndNotReusedSoon",
                        "two ids are given in turn");
const Violation kStartOrder("ContextPromise.EqualExpiriesComeInOrderOfCreation",
                            "equal expiries come in order of their start");
const Violation kRunsOn("ContextPromise.StartArmsARunningTimerAgain",
                        "starting a running timer does nothing");
const Violation kNotStopped("ContextPromise.AStoppedTimerCanBeStartedAgain",
                            "stopping a timer does nothing");
const Violation kNotCancelled("ContextPromise.CancelDropsADueExpiry",
                              "cancelling does not drop a due expiry");
const Violation kNotDeleted("ContextPromise.ADeletedTimerNeverExpires",
                            "deleting a timer does nothing");
const Violation kUnknownThrows("ContextPromise.UnknownTimersAreIgnored",
                               "starting an unknown timer throws");

}  // namespace

bool FaultyManagement::registerAgent(const std::string& agentId, MgmtAgentIfc* agent) {
  if (kNoAgents.on()) return true;
  if (kFirstAgent.on() && m_agent != nullptr) return true;
  m_agent = agent;
  return m_real.registerAgent(kOneId.on() ? "ClockMgmtId" : agentId, agent);
}

bool FaultyManagement::getData(ManageableData& record) {
  return kNoValue.on() || m_real.getData(record) || kAnyValue.on();
}

bool FaultyManagement::setData(ManageableData& record) {
  if (kWritesNothing.on()) return true;
  if ((kCallsBack.on() || kOwnThread.on()) && m_agent != nullptr)
    m_agent->manageableDataChanged(record);
  return kOwnThread.on() || m_real.setData(record) || kSaysWritten.on();
}

bool FaultyManagement::observeData(const std::string& key, MgmtAgentIfc* agent) {
  const bool observed = std::count(m_observed.begin(), m_observed.end(), key) > 0;
  m_observed.push_back(key);
  return (kOneObserver.on() && observed) || m_real.observeData(key, agent);
}

bool FaultyManagement::reportDataChanged(ManageableData& record) {
  return kReportLost.on() || m_real.reportDataChanged(record);
}

bool FaultyManagement::isUserData(ManageableData& record, int user) {
  return m_real.isUserData(record, user) || kAllUserData.on();
}

void FaultyManagement::setItemState(ManageableData& record, int state) {
  if (!kNoState.on()) m_real.setItemState(record, state);
}

PhysDefs::hardwareSubVariant FaultyPhysical::getHardwareSubVariant() {
  const int moved = kVariantMoves.on() ? ++m_asked : 0;
  return static_cast<PhysDefs::hardwareSubVariant>(m_real.getHardwareSubVariant() + moved);
}

void FaultyPhysical::subscribe(physicalEventObserver* observer,
                               const std::vector<PhysDefs::SubscriptionGrp>& groups) {
  if (kNoEvents.on()) return;
  if (kTwoSubscriptions.on()) observer->getSubscribingService();
  if (kAllEvents.on()) return m_real.subscribe(observer, {{{1, 2, 2}}});
  m_real.subscribe(observer, groups);
}

void FaultySecurityLog::record(time_t time, int facility, int severity, int eventClass,
                               int eventCode, bool failure, const std::string& text,
                               const std::string& subject, const std::string& origin) {
  if (kFailuresOnly.on() && !failure) return;
  m_real.record(time, facility, severity, eventClass, eventCode, failure, text,
                kNoSubject.on() ? "" : subject, origin);
}

class FaultyContext::FaultyOwner final : public Executable {
 public:
  FaultyOwner(Context& context, Executable& owner) : m_context(context), m_owner(owner) {}
  void init(Context& /*context*/) override {}
  void shutdown() override {}
  void timerEvent(int timer) override {
    if (kOffThread.on()) return std::thread([&] { m_owner.timerEvent(timer); }).join();
    m_owner.timerEvent(timer);
    m_context.startTimer(timer);
  }

 private:
  Context& m_context;
  Executable& m_owner;
};

FaultyContext::FaultyContext(Context& real) : m_real(real) {
  const auto service = [&](const char* name) { return m_real.getService(name); };
  m_services["LocalMgmtIfc"] =
      std::make_unique<FaultyManagement>(dynamic_cast<LocalMgmtIfc&>(*service("LocalMgmtIfc")));
  m_services["PhysicalInterfaceServiceIfc"] = std::make_unique<FaultyPhysical>(
      dynamic_cast<PhysicalInterfaceServiceIfc&>(*service("PhysicalInterfaceServiceIfc")));
  m_services["SecurityLogServiceIfc"] = std::make_unique<FaultySecurityLog>(
      dynamic_cast<SecurityLogServiceIfc&>(*service("SecurityLogServiceIfc")));
}

FaultyContext::~FaultyContext() = default;

Executable* FaultyContext::getService(const std::string& name) {
  const auto found = m_services.find(kWrongService.on() ? "LocalMgmtIfc" : name);
  if (found != m_services.end()) return found->second.get();
  return kAnyService.on() ? m_services.begin()->second.get() : m_real.getService(name);
}

int FaultyContext::createTimer(Executable& owner, unsigned int period) {
  Executable* called = &owner;
  if (kFirstOwner.on() && !m_timers.empty()) called = m_timers.begin()->second.owner;
  if (kPeriodic.on() || kOffThread.on()) {
    m_owners.push_back(std::make_unique<FaultyOwner>(m_real, owner));
    called = m_owners.back().get();
  }
  if (kLate.on() && period > 60'000) period += 1000;
  if (kSeconds.on()) period = period / 1000 * 1000;
  if (kSigned.on()) period = std::min(period, 3'600'000U);
  const int timer = m_real.createTimer(*called, period);
  m_timers[timer] = {called, period};
  if (kArmed.on()) m_real.startTimer(timer);
  return kReused.on() ? 1 + timer % 2 : timer;
}

void FaultyContext::startTimer(int timer) {
  if (kUnknownThrows.on() && m_timers.count(timer) == 0)
    throw std::out_of_range("unknown timer " + std::to_string(timer));
  if (kRunsOn.on() && m_running[timer]) return;
  m_running[timer] = true;
  if (kStartOrder.on() && m_timers.count(timer) != 0) {
    m_real.startTimer(m_real.createTimer(*m_timers[timer].owner, m_timers[timer].period));
    return;
  }
  m_real.startTimer(timer);
}

void FaultyContext::stopTimer(int timer) {
  if (!kNotStopped.on()) m_real.stopTimer(timer);
}

void FaultyContext::cancelTimer(int timer) {
  if (!kNotCancelled.on()) m_real.cancelTimer(timer);
}

void FaultyContext::deleteTimer(int timer) {
  if (!kNotDeleted.on()) m_real.deleteTimer(timer);
  m_timers.erase(timer);
}

}  // namespace conformance
