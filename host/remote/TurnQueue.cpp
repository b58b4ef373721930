#include "remote/TurnQueue.h"

#include <utility>

namespace host {

// The task may still be queued when this object is destroyed; then its steps have expired.
TurnQueue::TurnQueue(IoLoop& loop)
    : m_loop(loop), m_turn(std::make_shared<IoLoop::Task>([this, steps = std::weak_ptr(m_waiting)] {
        if (!steps.expired()) runOne();
      })) {}

void TurnQueue::add(std::function<void()> step) {
  m_waiting->push_back(std::move(step));
  m_loop.post(m_turn);
}

bool TurnQueue::idle() const {
  return m_waiting->empty();
}

void TurnQueue::runOne() {
  const auto step = std::move(m_waiting->front());
  m_waiting->pop_front();
  if (!idle()) m_loop.post(m_turn);  // before the step, which may throw
  step();
}

}  // namespace host
