#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "ClockServiceObserverIfc.h"

class ClockServiceIfc;

namespace bench {

// Observers of this process that do next to nothing. Owner: a measurement.
class Observers {
 public:
  explicit Observers(std::size_t count);
  ~Observers();
  Observers(const Observers&) = delete;
  Observers& operator=(const Observers&) = delete;

  [[nodiscard]] std::vector<ClockServiceObserverIfc*> all();

 private:
  class Adding;

  std::vector<Adding> m_observers;
};

// Tells each of them of an hour, with nothing around it.
void callEach(const std::vector<ClockServiceObserverIfc*>& observers, int hours);

// They observe the service while it lives. The service outlives it.
class Registration {
 public:
  Registration(ClockServiceIfc& service, Observers& observers);
  ~Registration();
  Registration(const Registration&) = delete;
  Registration& operator=(const Registration&) = delete;

 private:
  ClockServiceIfc& m_service;
  const std::vector<ClockServiceObserverIfc*> m_observers;
};

}  // namespace bench
