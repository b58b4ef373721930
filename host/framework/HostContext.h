#pragma once

#include <map>
#include <string>

#include "Context.h"
#include "base/Mutex.h"

namespace host {

class VirtualClock;

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

 private:
  VirtualClock& m_clock;
  Mutex m_mutex;
  std::map<std::string, Executable*> m_services CLOCK_GUARDED_BY(m_mutex);
};

}  // namespace host
