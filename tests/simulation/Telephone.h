#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "clock/VirtualClock.h"
#include "framework/HostContext.h"
#include "plugin/Journal.h"
#include "simulation/Listener.h"
#include "simulation/Parts.h"
#include "simulation/Peers.h"
#include "simulation/Step.h"

class ClockService;

namespace simulation {

// The telephone: the service on the host's framework, with a virtual clock.
// REQUIRES: the process works in a private folder (support::WorkingFolder); one telephone at a
// time.
class Telephone {
 public:
  using Arguments = std::vector<std::pair<std::string, std::int64_t>>;
  using Results = std::vector<std::pair<std::string, std::string>>;

  Telephone();
  ~Telephone();
  Telephone(const Telephone&) = delete;
  Telephone& operator=(const Telephone&) = delete;

  void apply(const Step& step);
  [[nodiscard]] Lines take() { return m_journal.take(); }
  [[nodiscard]] Lines snapshot();

 private:
  // Telephone.cpp
  void applyToTime(const Step& step);
  void applyToManagement(const Step& step);
  void applyToDevice(const Step& step);
  void restart(const Step& step);
  void powerDown(bool inOrder);
  void setService(const std::string& name, bool present);
  bool set(const std::string& key, const std::string& value);
  std::string get(const std::string& key);
  void answer(bool result) { m_journal.add(result ? "-> true" : "-> false"); }

  // TelephoneCalls.cpp
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

  plugin::Journal m_journal;
  RecordingStore m_store{m_journal};
  std::map<std::string, std::string> m_values;
  std::map<std::string, bool> m_mayReset;
  std::map<std::string, std::unique_ptr<RecordingObserver>> m_observers;
  std::shared_ptr<RecordingLog> m_log{std::make_shared<RecordingLog>(m_journal)};
  Listener m_listener;

  // One run of the service.
  std::unique_ptr<host::VirtualClock> m_clock;
  std::unique_ptr<host::HostContext> m_context;
  std::unique_ptr<RecordingManagement> m_management;
  std::unique_ptr<RecordingPhysical> m_physical;
  std::unique_ptr<RecordingSecurity> m_security;
  std::unique_ptr<Peers> m_peers;
  std::unique_ptr<ClockService> m_service;
};

}  // namespace simulation
