#pragma once

#include <unistd.h>

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "support/SleepingThread.h"

namespace support {

// Runs a call on its own thread. The call is expected to block on something that the test holds.
// Owner: the test. The destructor joins the thread, so the test has to release that thing first.
class WaitingCall {
 public:
  explicit WaitingCall(std::function<void()> call)
      : m_thread([this, call = std::move(call)] {
          m_id = gettid();
          call();
          m_returned = true;
        }) {}
  ~WaitingCall() { m_thread.join(); }
  WaitingCall(const WaitingCall&) = delete;
  WaitingCall& operator=(const WaitingCall&) = delete;

  // True once the thread sleeps; false when the call has returned instead.
  [[nodiscard]] bool waits() const {
    while (!m_returned && !sleeps(m_id)) std::this_thread::yield();
    return !m_returned;
  }

 private:
  std::atomic<int> m_id{0};
  std::atomic<bool> m_returned{false};
  std::thread m_thread;  // last: it uses all of the above
};

}  // namespace support
