#pragma once

#include <deque>
#include <functional>
#include <memory>

#include "base/IoLoop.h"

namespace host {

// Runs work that is too long for one turn of the loop in steps, first in, first out: one step in
// each pass of the loop, after the handlers that were ready before it, so that other handlers never
// wait for more than one step. Owner: the server. Thread: the loop's. Failure: an exception
// out of a step reaches the loop, and the next step still runs. A queued step needs no further
// memory.
class TurnQueue {
 public:
  explicit TurnQueue(IoLoop& loop);
  ~TurnQueue() = default;  // drops the waiting steps
  TurnQueue(const TurnQueue&) = delete;
  TurnQueue& operator=(const TurnQueue&) = delete;

  void add(std::function<void()> step);  // throws std::bad_alloc: the step is not queued
  [[nodiscard]] bool idle() const;       // no step waits

 private:
  using Steps = std::deque<std::function<void()>>;
  void runOne();

  IoLoop& m_loop;
  const std::shared_ptr<Steps> m_waiting = std::make_shared<Steps>();
  const std::shared_ptr<IoLoop::Task> m_turn;
};

}  // namespace host
