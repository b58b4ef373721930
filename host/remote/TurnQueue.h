#pragma once

#include <functional>
#include <memory>

namespace asio {
class io_context;
}

namespace host {

// Where those wait who have more to do than fits in one turn of the loop. One of them goes on each
// time that everybody else has had the loop: however many wait, the others wait for one of them.
// Owner: the server. Thread: the loop's. Failure: what a step throws is the loop's; the next one
// has its turn. Once a step is taken, its turn comes also when no memory is left.
class TurnQueue {
 public:
  explicit TurnQueue(asio::io_context& loop);
  ~TurnQueue();  // what waits does not run
  TurnQueue(const TurnQueue&) = delete;
  TurnQueue& operator=(const TurnQueue&) = delete;

  void wait(std::function<void()> step);  // throws std::bad_alloc: it is not taken

 private:
  struct State;
  static void runOneSoon(const std::shared_ptr<State>& state);
  static void runOne(const std::shared_ptr<State>& state);
  std::shared_ptr<State> m_state;
};

}  // namespace host
