#pragma once

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

#include "clock/VirtualClock.h"
#include "support/Part.h"

// Notes which timers came, and at which uptime; what else is to happen then can be given.
class TimerOwner : public support::Part {
 public:
  using Note = std::pair<int, host::VirtualClock::Nanoseconds>;

  explicit TimerOwner(const host::VirtualClock& clock) : m_clock(clock) {}

  void timerEvent(int timer) override {
    notes.emplace_back(timer, m_clock.uptime());
    if (then) then(timer);
  }

  [[nodiscard]] std::vector<int> ids() const {
    std::vector<int> all;
    for (const Note& note : notes) all.push_back(note.first);
    return all;
  }

  std::vector<Note> notes;
  std::function<void(int)> then;

 private:
  const host::VirtualClock& m_clock;
};
