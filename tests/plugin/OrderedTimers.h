#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Context.h"
#include "clock/VirtualClock.h"

namespace plugin {

// A framework that delivers equal expiries in a chosen order and reports each call.
// Owner: the test, after the clock. Thread: any for the calls of services, otherwise the test's.
class OrderedTimers : public Context {
 public:
  enum class Order { ofCreation, reversed };

  OrderedTimers(host::VirtualClock& clock, Order order) : m_clock(clock), m_order(order) {}
  virtual ~OrderedTimers() = default;
  OrderedTimers(const OrderedTimers&) = delete;
  OrderedTimers& operator=(const OrderedTimers&) = delete;

  // Gets each call as it is made: "create 3600000 -> 5", "start 5", "stop 5", "cancel 5", "delete
  // 5".
  std::function<void(const std::string&)> onCall;

  // From now on creating a timer fails and returns this id; without one, it succeeds again.
  void refuseTimers(std::optional<int> id) { m_refusedId = id; }
  // Creating the first timers fails; the last of these gets the id 0.
  void refuseFirst(int count) { m_lastId = -count; }

  void add(const std::string& name, Executable* service) { m_services[name] = service; }

  // Lets time pass, and delivers each expiry at its instant.
  void pass(std::chrono::nanoseconds duration);

  // The timer's period, if it exists, and the time until it expires, if it is armed.
  [[nodiscard]] std::optional<std::chrono::milliseconds> periodOf(int timer) const;
  [[nodiscard]] std::optional<std::chrono::nanoseconds> dueIn(int timer) const;
  [[nodiscard]] std::vector<int> armed() const;
  [[nodiscard]] std::size_t timers() const;

  Executable* getService(const std::string& name) override;
  int createTimer(Executable& owner, unsigned int periodMilliseconds) override;
  void startTimer(int timerId) override;
  void stopTimer(int timerId) override;
  void cancelTimer(int timerId) override;
  void deleteTimer(int timerId) override;

 private:
  struct Timer {
    Executable* owner;
    std::chrono::milliseconds period;
    std::optional<std::chrono::nanoseconds> expiry;
  };
  void report(const std::string& call) const;
  std::optional<std::pair<std::chrono::nanoseconds, int>> next() const;
  Executable* disarm(int timer);  // returns its owner; null if it does not exist

  mutable std::mutex m_mutex;  // guards the timers
  host::VirtualClock& m_clock;
  const Order m_order;
  std::map<std::string, Executable*> m_services;
  std::map<int, Timer> m_timers;
  int m_lastId = 0;
  std::optional<int> m_refusedId;
};

}  // namespace plugin
