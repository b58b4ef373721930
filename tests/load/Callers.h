#pragma once

#include <atomic>
#include <deque>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>

#include "load/Latencies.h"

namespace load {

// Clients that call without a pause, each on a thread of its own, until the end.
// Owner: a test. Thread: the test's. Failure: the first is fault().
class Callers {
 public:
  Callers(const std::filesystem::path& socket, int count);
  ~Callers();
  Callers(const Callers&) = delete;
  Callers& operator=(const Callers&) = delete;

  // How long the calls since the last time took.
  [[nodiscard]] Latencies take();

  [[nodiscard]] std::string fault();

 private:
  struct Caller {
    std::mutex mutex;  // guards latencies
    Latencies latencies;
    std::thread thread;
  };

  void work(Caller& caller, const std::filesystem::path& socket);

  std::atomic<bool> m_over{false};
  std::deque<Caller> m_callers;
  std::mutex m_faultMutex;
  std::string m_fault;
};

}  // namespace load
