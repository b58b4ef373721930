#pragma once

#include <condition_variable>
#include <map>
#include <mutex>
#include <utility>

#include "Clock.h"
#include "Context.h"
#include "Executable.h"
#include "Settings.h"

namespace example {

// Timers on a loop, and one service: the settings. Owner: main; outlives the services it runs.
// Thread: runUntil on the framework thread, the rest on any.
class Framework final : public Context {
 public:
  // `settings` outlives the framework.
  explicit Framework(Settings& settings);

  // Context
  Executable* getService(const std::string& name) override;
  int createTimer(Executable& owner, unsigned int periodMilliseconds) override;
  void startTimer(int timerId) override;
  void stopTimer(int timerId) override;
  void cancelTimer(int timerId) override;
  void deleteTimer(int timerId) override;

  // The loop: waits for the timers that expire up to this uptime, and delivers them.
  void runUntil(Clock::Milliseconds uptime);

 private:
  struct Timer {
    Executable* owner;
    Clock::Milliseconds period;
    Clock::Milliseconds expiry;  // kStopped: not armed
  };
  using Timers = std::map<int, Timer>;

  Timers::iterator earliest();
  void setExpiry(int timerId, bool armed);
  void waitUntil(Clock::Milliseconds uptime, std::unique_lock<std::mutex>& lock);

  Settings& m_settings;
  std::mutex m_mutex;  // the members below; not held while a service is called
  std::condition_variable m_changed;
  Timers m_timers;  // by id, which is the order of creation
  int m_lastId = 0;
};

}  // namespace example
