#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "Executable.h"
#include "base/Mutex.h"
#include "clock/VirtualClock.h"
#include "framework/DataAccess.h"
#include "services/History.h"

namespace host {

// Where the time that the telephone shows comes from, as far as the host knows.
struct ClockOrigin {
  std::string source;            // "built-in start time", "saved time", "by hand" ...; or empty
  std::optional<Change> change;  // the last one of the shown time
  VirtualClock::Nanoseconds changed{0};   // uptime of it
  std::optional<Change> systemChange;     // the last one of the system time
  std::optional<std::string> report;      // of the NTP client, as it was saved
  VirtualClock::Nanoseconds reported{0};  // uptime of it
};

// How often the calling thread has set a telephone's wall clock.
[[nodiscard]] std::uint64_t wallSetsHere();

// Writes the changes of one telephone's clock, zone and settings to its history. It watches the
// sets of the wall clock and the file setupTZ.sh, and forwards calls to the store. Owner: the
// device; clock, store and history outlive it. Thread: any. Failure: a change is lost when memory
// runs out.
class ChangeRecorder : public Executable, public DataAccess {
 public:
  ChangeRecorder(VirtualClock& clock, DataAccess& store, History& history);
  ~ChangeRecorder() override;

  void init(Context&) override {}
  void shutdown() override {}

  bool setItem(const std::string& schema, const std::string& key,
               const std::string& value) override;
  std::optional<std::string> getItem(const std::string& schema, const std::string& key) override;

  [[nodiscard]] ClockOrigin origin() const;

  // Call it when a program may have set the machine's clock: records a change that did not come
  // through `clock`.
  void checkMachineClock();

 private:
  using Nanoseconds = VirtualClock::Nanoseconds;

  void wallSet(Nanoseconds from, Nanoseconds to, VirtualClock::Setter setter);
  void settingStored(const std::string& key, const std::string& before, const std::string& after);
  void fileStored(const std::string& name, const std::string& before, const std::string& after);
  [[nodiscard]] bool hasSavedTime() const;
  // otherwise: the cause, if the thread has none.
  [[nodiscard]] Change changeOf(const std::string& what, const char* otherwise) const;

  VirtualClock& m_clock;
  DataAccess& m_store;
  History& m_history;
  mutable Mutex m_mutex;
  ClockOrigin m_origin CLOCK_GUARDED_BY(m_mutex);
  Nanoseconds m_knownAtZero CLOCK_GUARDED_BY(m_mutex);  // of the system time, at uptime 0
  Change m_lastSetting CLOCK_GUARDED_BY(m_mutex);
};

}  // namespace host
