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

// A framework that delivers equal expiries in a chosen order, and tells what was asked of it.
// Owner: the test, after the clock. Thread: any for what services call, else the test's.
class OrderedTimers : public Context {
 public:
  enum class Order { ofCreation, reversed };

  OrderedTimers(host::VirtualClock& clock, Order order) : m_clock(clock), m_order(order) {}
  virtual ~OrderedTimers() = default;
  OrderedTimers(const OrderedTimers&) = delete;
  OrderedTimers& operator=(const OrderedTimers&) = delete;

  // Each call on the way: "create 3600000 -> 5", "start 5", "stop 5", "cancel 5", "delete 5".
  std::function<void(const std::string&)> onCall;

  // From now on no timer can be created: the id is this. Without one, timers can be created again.
  void refuseTimers(std::optional<int> id) { m_refusedId = id; }
  // The first timers cannot be created; the id of the last of them is 0.
  void refuseFirst(int count) { m_lastId = -count; }

  void add(const std::string& name, Executable* service) { m_services[name] = service; }

  // Time passes; each expiry on the way is delivered at its own instant.
  void pass(std::chrono::nanoseconds duration);

  // The timer's period, and how long until it expires; nothing for one that is not there, not
  // armed.
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
  void tell(const std::string& call) const;
  std::optional<std::pair<std::chrono::nanoseconds, int>> next() const;
  Executable* disarm(int timer);

  mutable std::mutex m_mutex;  // guards the timers
  host::VirtualClock& m_clock;
  const Order m_order;
  std::map<std::string, Executable*> m_services;
  std::map<int, Timer> m_timers;
  int m_lastId = 0;
  std::optional<int> m_refusedId;
};

}  // namespace plugin
