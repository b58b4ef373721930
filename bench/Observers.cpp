#include "Observers.h"

#include <atomic>
#include <chrono>
#include <string>
#include <utility>

#include "ClockServiceIfc.h"
#include "Rounds.h"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

// What follows begins only when what comes before is done. Otherwise the first few calls would hide
// behind the end of the look at the watch.
void settle() {
#if defined(__x86_64__)
  __builtin_ia32_lfence();
#else
  std::atomic_thread_fence(std::memory_order_seq_cst);
#endif
}

class Observer : public ClockServiceObserverIfc {
 public:
  virtual ~Observer() = default;
  void timezoneChangeEvent(std::string) override {}
  void dateChangeEvent(int, int, int) override {}
  void alarmClockEvent(int) override {}
};

}  // namespace

struct Observers::Watch {
  Clock::time_point hour;
  Clock::time_point first;
  std::vector<double> before;  // all in nanoseconds
  std::vector<double> between;
  std::vector<double> whole;

  static double nanoseconds(Clock::duration time) {
    return std::chrono::duration<double, std::nano>(time).count();
  }
};

class Observers::Adding : public Observer {
 public:
  void timeChangeEvent(int hours, int, int) override { m_sum += hours; }

 private:
  long m_sum = 0;
};

class Observers::First : public Observer {
 public:
  explicit First(Watch& watch) : m_watch(watch) {}
  void timeChangeEvent(int, int, int) override {
    m_watch.first = Clock::now();
    settle();
  }

 private:
  Watch& m_watch;
};

class Observers::Last : public Observer {
 public:
  explicit Last(Watch& watch) : m_watch(watch) {}
  void timeChangeEvent(int, int, int) override {
    const Clock::time_point now = Clock::now();
    m_watch.before.push_back(Watch::nanoseconds(m_watch.first - m_watch.hour));
    m_watch.between.push_back(Watch::nanoseconds(now - m_watch.first));
    m_watch.whole.push_back(Watch::nanoseconds(now - m_watch.hour));
  }

 private:
  Watch& m_watch;
};

Observers::Observers(std::size_t count)
    : m_watch(std::make_unique<Watch>()),
      m_first(std::make_unique<First>(*m_watch)),
      m_observers(count),
      m_last(std::make_unique<Last>(*m_watch)) {}

Observers::~Observers() = default;

std::vector<ClockServiceObserverIfc*> Observers::all() {
  std::vector<ClockServiceObserverIfc*> observers;
  observers.push_back(m_first.get());
  for (Adding& observer : m_observers) observers.push_back(&observer);
  observers.push_back(m_last.get());
  return observers;
}

void Observers::hourBegins() {
  m_watch->hour = Clock::now();
}

Observers::Hour Observers::takeHour() {
  return {middleMean(std::exchange(m_watch->before, {})),
          middleMean(std::exchange(m_watch->between, {})),
          middleMean(std::exchange(m_watch->whole, {}))};
}

Registration::Registration(ClockServiceIfc& service, Observers& observers)
    : m_service(service), m_observers(observers.all()) {
  for (ClockServiceObserverIfc* const observer : m_observers) {
    m_service.observeTimeEvents(observer);
  }
}

Registration::~Registration() {
  for (ClockServiceObserverIfc* const observer : m_observers) {
    m_service.unobserveTimeEvents(observer);
  }
}

}  // namespace bench
