#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "simulation/Journal.h"
#include "simulation/Step.h"
#include "simulation/world/Listener.h"
#include "simulation/world/Peers.h"
#include "simulation/world/RecordingParts.h"

class ClockServiceIfc;
class ClockService;
class Service;

namespace host {
class HostContext;
class VirtualClock;
}  // namespace host

namespace simulation {

// The telephone itself: the service on the host's parts, under a virtual clock. The actual side of
// a life. REQUIRES: the working folder is a private one with data/, ipc/ and state/, and state/ is
// the storage folder; one world at a time.
class World {
 public:
  World();
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  void apply(const Step& step);
  [[nodiscard]] Lines take() { return m_journal.take(); }
  [[nodiscard]] Lines snapshot();

 private:
  bool applyToTime(const Step& step);
  bool applyToClock(const Step& step);
  bool applyToManagement(const Step& step);
  bool applyToPeers(const Step& step);
  void applyToDevice(const Step& step);
  void report(const Step& step);
  void convert(const std::string& utc);
  void idle();
  void answered(bool result) { m_journal.add(result ? "-> true" : "-> false"); }

  void restart(const Step& step);
  void powerDown(bool inOrder);
  void build(int variant, std::int64_t missing);
  void setService(const std::string& name, bool there);
  bool set(const std::string& key, const std::string& value);
  std::string get(const std::string& key);
  bool reset();
  ClockServiceObserverIfc* observer(const std::string& name);
  ClockServiceIfc& clockInterface();

  Journal m_journal;
  FaultyStore m_store{m_journal};
  std::map<std::string, std::string> m_values;
  std::map<std::string, bool> m_mayReset;
  std::map<std::string, std::unique_ptr<RecordingObserver>> m_observers;
  std::shared_ptr<RecordingLog> m_log;
  Listener m_listener;

  std::unique_ptr<host::VirtualClock> m_clock;
  std::unique_ptr<host::HostContext> m_context;
  std::unique_ptr<RecordingManagement> m_management;
  std::unique_ptr<RecordingPhysical> m_physical;
  std::unique_ptr<RecordingSecurity> m_security;
  std::unique_ptr<Peers> m_peers;
  std::unique_ptr<Service> m_service;
  bool m_managed = false;
};

}  // namespace simulation
