#include "Observers.h"

#include "ClockServiceIfc.h"

namespace bench {

class Observers::Adding : public ClockServiceObserverIfc {
 public:
  virtual ~Adding() = default;
  void timezoneChangeEvent(std::string) override {}
  void timeChangeEvent(int hours, int, int) override { m_sum += hours; }
  void dateChangeEvent(int, int, int) override {}
  void alarmClockEvent(int) override {}

 private:
  long m_sum = 0;
};

Observers::Observers(std::size_t count) : m_observers(count) {}

Observers::~Observers() = default;

std::vector<ClockServiceObserverIfc*> Observers::all() {
  std::vector<ClockServiceObserverIfc*> observers;
  for (Adding& observer : m_observers) observers.push_back(&observer);
  return observers;
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
