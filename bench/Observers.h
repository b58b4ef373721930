#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "ClockServiceObserverIfc.h"

class ClockServiceIfc;

namespace bench {

// Observers of this process that do next to nothing, between two that look at a watch. What leads
// to the first of them is timed too, and apart. Owner: a measurement.
class Observers {
 public:
  explicit Observers(std::size_t count);
  ~Observers();
  Observers(const Observers&) = delete;
  Observers& operator=(const Observers&) = delete;

  // In the order in which they are to be called: the first with the watch, `count`, the last.
  [[nodiscard]] std::vector<ClockServiceObserverIfc*> all();

  // A look at the watch; the hour comes right behind it.
  void hourBegins();

  // Nanoseconds of an hour.
  struct Hour {
    double before;   // from its beginning to the first of them
    double between;  // from the first to the last
    double whole;    // from its beginning to the last
  };
  // Of the hours told since it was asked before. REQUIRES: one was.
  [[nodiscard]] Hour takeHour();

 private:
  class Adding;
  class First;
  class Last;
  struct Watch;

  std::unique_ptr<Watch> m_watch;
  std::unique_ptr<First> m_first;
  std::vector<Adding> m_observers;
  std::unique_ptr<Last> m_last;
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
