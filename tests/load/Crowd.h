#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <string>
#include <thread>

#include "remote/FrameSocket.h"

namespace load {

// Many clients of one user on one thread: each sends a burst of calls and reads the replies; then
// all send again, or all disconnect and connect again. Owner: a test. Thread: the test's. Failure:
// a host that disconnects ends it.
class Crowd {
 public:
  // socket: the call socket. burst: `calls` calls with a reply.
  Crowd(const std::filesystem::path& socket, std::string burst, std::size_t calls, bool reconnects);
  ~Crowd();  // disconnects
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
  const bool m_reconnects;
  std::atomic<bool> m_over{false};
  std::atomic<std::uint64_t> m_replies{0};
  std::atomic<std::uint64_t> m_accepted{0};
  std::atomic<std::uint64_t> m_refused{0};
  std::thread m_thread;
};

// Clients of each crowd: more than one pass of the host's loop handles.
inline constexpr std::size_t kCrowd = 220;

}  // namespace load
