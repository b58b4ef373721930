#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Context.h"
#include "base/Mutex.h"

namespace host {

class VirtualClock;

// The name of the timer at whose expiry the service applies a zone that was set.
inline constexpr std::string_view kZoneRefresh = "zone refresh";

// An armed timer of the service.
struct NamedTimer {
  std::string_view name;              // as in docs/explanation/architecture.md
  std::chrono::nanoseconds expiry{};  // uptime
};

// The framework's side of Context: services by name, and the clock's timers.
// Owner: the device; clock and services outlive it. Thread: any.
class HostContext final : public Context {
 public:
  explicit HostContext(VirtualClock& clock);
  HostContext(const HostContext&) = delete;
  HostContext& operator=(const HostContext&) = delete;

  // Registers a service, in place of an earlier one of that name.
  void add(const std::string& name, Executable* service);
  void remove(const std::string& name);

  Executable* getService(const std::string& name) override;
  int createTimer(Executable& owner, unsigned int periodMilliseconds) override;
  void startTimer(int timerId) override;
  void stopTimer(int timerId) override;
  void cancelTimer(int timerId) override;
  void deleteTimer(int timerId) override;

  // In the order of their expiry. A timer's name follows from the order in which the service
  // creates its timers: one that it creates after deleting another, on the same thread, takes its
  // place.
  [[nodiscard]] std::vector<NamedTimer> armedTimers() const;

 private:
  VirtualClock& m_clock;
  mutable Mutex m_mutex;
  std::map<std::string, Executable*> m_services CLOCK_GUARDED_BY(m_mutex);
  std::map<int, std::size_t> m_places CLOCK_GUARDED_BY(m_mutex);               // of each timer
  std::map<std::thread::id, std::size_t> m_deleted CLOCK_GUARDED_BY(m_mutex);  // the last place
  std::size_t m_nextPlace CLOCK_GUARDED_BY(m_mutex) = 0;
};

}  // namespace host
