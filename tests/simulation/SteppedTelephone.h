#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "clock/VirtualClock.h"
#include "framework/HostContext.h"
#include "simulation/HeldPipe.h"
#include "simulation/Peers.h"
#include "simulation/Step.h"
#include "simulation/ZoneState.h"
#include "support/Journal.h"
#include "support/JournalObserver.h"
#include "support/LogCapture.h"
#include "support/RecordingServices.h"

class ClockService;

namespace simulation {

// A telephone that takes steps: the service on the host's framework, with a virtual clock. Not a
// support::Telephone, because a restart is one of the steps and renews all but the store.
// REQUIRES: the process works in a private folder (support::WorkingFolder); one telephone at a
// time.
class SteppedTelephone {
 public:
  using Arguments = std::vector<std::pair<std::string, std::int64_t>>;
  using Results = std::vector<std::pair<std::string, std::string>>;

  SteppedTelephone();
  ~SteppedTelephone();
  SteppedTelephone(const SteppedTelephone&) = delete;
  SteppedTelephone& operator=(const SteppedTelephone&) = delete;

  void apply(const Step& step);
  [[nodiscard]] Lines take() {
    m_log.clear();
    return m_journal.take();
  }
  [[nodiscard]] Lines snapshot();

 private:
  // SteppedTelephone.cpp
  void applyToTime(const Step& step);
  void applyToManagement(const Step& step);
  void applyToDevice(const Step& step);
  void restart(const Step& step);
  void powerDown(bool inOrder);
  void setService(const std::string& name, bool present);
  bool set(const std::string& key, const std::string& value);
  std::string get(const std::string& key);
  void recordLog(const host::LogEntry& entry);
  void recordSecurity(const support::RecordingSecurityLog::Record& record);
  void answer(bool result) { m_journal.add(result ? "-> true" : "-> false"); }

  // SteppedTelephoneCalls.cpp
  void applyToClock(const Step& step);
  void setDirectly(const Step& step);
  void setRemotely(const Step& step);
  void callFor(const Method& request, const std::string& caller);
  void observe(const std::string& name, bool begins);
  void ask(const Step& step);
  void askNow();
  void askAboutText(const std::string& utc);
  void askAboutNumbers(const std::vector<std::int64_t>& n);
  void askForAlarm(const std::string& utc);
  void invalidCall(const std::string& kind);
  void expect(const Method& request, const Results& results);

  support::Journal m_journal;
  support::RecordingStore m_store{m_journal};
  std::map<std::string, std::string> m_values;
  std::map<std::string, bool> m_mayReset;
  std::map<std::string, std::unique_ptr<support::JournalObserver>> m_observers;
  support::LogCapture m_log{host::ApplicationLog::kDefaultLevel,
                            [this](const auto& entry) { recordLog(entry); }};
  HeldPipe m_pipe;

  // One run of the service.
  std::unique_ptr<host::VirtualClock> m_clock;
  std::unique_ptr<host::HostContext> m_context;
  std::unique_ptr<support::RecordingManagement> m_management;
  std::unique_ptr<support::RecordingPhysical> m_physical;
  std::unique_ptr<support::RecordingSecurityLog> m_security;
  std::unique_ptr<Peers> m_peers;
  std::unique_ptr<ClockService> m_service;
};

}  // namespace simulation
