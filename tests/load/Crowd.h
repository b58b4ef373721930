#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

#include "load/Effects.h"
#include "remote/FrameSocket.h"

namespace load {

// Many clients of one user on one thread: they send a burst of calls each, read the replies, and
// send again, or hang up together and come again, until the end. Owner: a test. Thread: the test's.
// Failure: a host that hangs up ends it.
class Crowd {
 public:
  // socket: that of calls. burst: what each client sends at a time, calls with a reply.
  Crowd(const std::filesystem::path& socket, std::string burst, std::size_t calls,
        bool comesAndGoes);
  ~Crowd();  // hangs up
  Crowd(const Crowd&) = delete;
  Crowd& operator=(const Crowd&) = delete;

  [[nodiscard]] std::uint64_t replies() const { return m_replies; }
  [[nodiscard]] std::uint64_t accepted() const { return m_accepted; }  // replies that end in true
  [[nodiscard]] std::uint64_t refused() const { return m_refused; }    // ... in false

 private:
  void work(const std::filesystem::path& socket);
  void exchange(std::deque<host::FrameSocket>& clients);
  void readReplies(host::FrameSocket& client);

  const std::string m_burst;
  const std::size_t m_calls;
  const bool m_comesAndGoes;
  std::atomic<bool> m_over{false};
  std::atomic<std::uint64_t> m_replies{0};
  std::atomic<std::uint64_t> m_accepted{0};
  std::atomic<std::uint64_t> m_refused{0};
  std::thread m_thread;
};

// Clients of each crowd: more than the loop looks at in one go.
inline constexpr std::size_t kCrowd = 220;

}  // namespace load
