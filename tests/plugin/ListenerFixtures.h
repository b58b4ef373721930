#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "SNTPTimeChangeObserver.h"
#include "plugin/WatchedCalls.h"
#include "support/ListenerPipe.h"
#include "support/LogCapture.h"

namespace plugin {

// Records the listener's reports. The test waits for them, and can make the listener wait in one.
class Reports final : public SNTPTimeChangeObserver {
 public:
  void handleSNTPClientUpdate(long secondsSinceEpoch) override {
    std::unique_lock lock(m_mutex);
    m_values.push_back(secondsSinceEpoch);
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return !m_held; });
  }

  // All reports, once there are `count` or after ten seconds.
  std::vector<long> first(std::size_t count) {
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, std::chrono::seconds{10}, [&] { return m_values.size() >= count; });
    return m_values;
  }
  void hold(bool held) {
    const std::lock_guard lock(m_mutex);
    m_held = held;
    m_changed.notify_all();
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::vector<long> m_values;
  bool m_held = false;
};

// A pipe, and a listener that is not started yet.
class ListenerNotStarted : public testing::Test {
 protected:
  ListenerNotStarted() { resetCalls(); }
  ~ListenerNotStarted() override {
    end();
    resetCalls();  // otherwise the next test's reads would fail, too
  }

  void end() {
    pipe.release();
    listener.reset();
  }

  support::LogCapture log{6};
  Reports reports;
  support::ListenerPipe pipe;
  std::unique_ptr<SNTPClientThread> listener = std::make_unique<SNTPClientThread>(&reports);
};

class ListenerRunning : public ListenerNotStarted {
 protected:
  ListenerRunning() { listener->start(); }
};

}  // namespace plugin
