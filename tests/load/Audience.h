#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "load/Subscriber.h"

namespace load {

// Many subscribers that read on one thread, each held to hear what was announced, once and in
// order. Owner: a test. Thread: the test's. Failure: the first is fault(); the constructor throws.
class Audience {
 public:
  Audience(const std::filesystem::path& socket, std::size_t count);
  ~Audience();
  Audience(const Audience&) = delete;
  Audience& operator=(const Audience&) = delete;

  // To be called before the clock is moved.
  void announce(const std::vector<std::string>& events);

  // Waits until each has heard all that was announced. False at the limit, and after a fault.
  [[nodiscard]] bool hasHeardAll(std::chrono::seconds limit);

  [[nodiscard]] std::uint64_t announced() const;
  [[nodiscard]] std::string fault() const;

 private:
  void work();
  void listen(std::size_t number);
  void hear(std::size_t number, std::string_view event);
  void fail(const std::string& fault);

  std::vector<Subscriber> m_subscribers;
  host::Descriptor m_events;   // epoll
  host::Descriptor m_end;      // eventfd
  mutable std::mutex m_mutex;  // guards what follows
  std::condition_variable m_changed;
  std::deque<std::string> m_announced;
  std::vector<std::size_t> m_heard;  // of each subscriber
  std::uint64_t m_outstanding = 0;   // events times subscribers
  std::string m_fault;
  std::thread m_thread;
};

}  // namespace load
