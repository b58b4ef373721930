#include "remote/TurnQueue.h"

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <deque>
#include <utility>

#include "base/WaitMemory.h"

namespace host {

struct TurnQueue::State {
  asio::io_context& loop;
  std::deque<std::function<void()>> waiting{};
  bool posted = false;  // runOne is queued on the loop
  // For the posted handler, so that it needs no memory.
  std::shared_ptr<WaitMemory> waitMemory = std::make_shared<WaitMemory>();
};

TurnQueue::TurnQueue(asio::io_context& loop) : m_state(std::make_shared<State>(State{loop})) {}

TurnQueue::~TurnQueue() = default;

void TurnQueue::add(std::function<void()> step) {
  m_state->waiting.push_back(std::move(step));
  postNext(m_state);
}

bool TurnQueue::idle() const {
  return m_state->waiting.empty();
}

void TurnQueue::postNext(const std::shared_ptr<State>& state) {
  if (state->posted || state->waiting.empty()) return;
  asio::post(state->loop, WaitHandler{state->waitMemory, [weak = std::weak_ptr(state)] {
                                        if (const auto alive = weak.lock()) runOne(alive);
                                      }});
  state->posted = true;
}

void TurnQueue::runOne(const std::shared_ptr<State>& state) {
  state->posted = false;
  const auto step = std::move(state->waiting.front());
  state->waiting.pop_front();
  postNext(state);  // before the step, which may throw
  step();
}

}  // namespace host
