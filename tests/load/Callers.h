#pragma once

#include <atomic>
#include <exception>
#include <filesystem>
#include <mutex>
#include <thread>
#include <vector>

#include "load/Latencies.h"

namespace load {

// Clients that call without a pause, each on a thread of its own, until they are destroyed.
// Owner: a test. Thread: the test's.
class Callers {
 public:
  Callers(const std::filesystem::path& socket, int count);
  ~Callers();
  Callers(const Callers&) = delete;
  Callers& operator=(const Callers&) = delete;

  // The calls since the last take(). Throws what ended a caller.
  [[nodiscard]] Latencies take();

 private:
  void work(const std::filesystem::path& socket);

  std::atomic<bool> m_over{false};
  std::mutex m_mutex;  // guards the next two
  Latencies m_latencies;
  std::exception_ptr m_failure;
  std::vector<std::thread> m_threads;
};

}  // namespace load
