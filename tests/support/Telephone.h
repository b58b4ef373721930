#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "ClockService.h"
#include "clock/VirtualClock.h"
#include "framework/HostContext.h"
#include "services/LocalManagement.h"
#include "services/MemoryDataAccess.h"
#include "services/PhysicalInterface.h"
#include "support/JournalObserver.h"
#include "support/ListenerPipe.h"
#include "support/RecordingServices.h"
#include "support/ZoneGuard.h"

namespace support {

// A telephone's services under virtual time, and its clock service while it is switched on.
// Owner: the test, one at a time. Thread: the test's, which is the framework thread.
class Telephone {
 public:
  explicit Telephone(int variant = 0);
  ~Telephone();
  Telephone(const Telephone&) = delete;
  Telephone& operator=(const Telephone&) = delete;

  // Before switchOn.
  void store(const std::string& key, const std::string& value);
  void storeZone(const std::string& offset, bool daylight, bool automatic, int zone);

  // Creates and initialises the clock service; destroys it.
  void switchOn();
  void switchOff();
  ClockService& service() { return *m_service; }

  // The stored text of a setting; "(none)" without one.
  std::string stored(const std::string& key);

  // The value that the management layer reads, or "(refused)".
  std::string managed(const std::string& key);
  bool manage(const std::string& key, const std::string& value);
  // The same and, when accepted, the zone is recomputed.
  void changeZone(const std::string& key, const std::string& value);

  // Lets time pass; moves the system's clock. utc: "2026-03-08T06:59:50".
  void pass(std::chrono::nanoseconds duration) { clock.advance(duration); }
  void jump(const std::string& utc);
  void jumpTo(std::int64_t secondsSinceEpoch);
  [[nodiscard]] std::int64_t wallSeconds() const;
  [[nodiscard]] std::string wallText() const;  // as jump takes it

  host::VirtualClock clock;
  host::HostContext context{clock};
  host::LocalManagement management;
  host::PhysicalInterface physical;
  host::MemoryDataAccess settings;
  RecordingSecurityLog security;
  Journal events;
  JournalObserver observer{events};  // registers before init
  ListenerPipe pipe;

 private:
  const ZoneGuard m_zone{"UTC0"};
  std::unique_ptr<ClockService> m_service;
};

// The content of setupTZ.sh in the storage folder; empty without one.
std::string zoneScript();

}  // namespace support
