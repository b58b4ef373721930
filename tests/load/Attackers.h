#pragma once

#include <atomic>
#include <deque>
#include <filesystem>
#include <string>
#include <thread>

namespace load {

// One way to take more of a host than is due: bytes that are sent again and again, and hardly read.
struct Attack {
  bool control;       // at the socket of control requests
  std::string bytes;  // of one round; some rounds are one connection
  int rounds;
  bool reads;  // what comes between rounds; else it stays unread
};

// Clients without manners, each on a thread of its own, until the end. Owner: a test. Thread: the
// test's. Failure: a host that hangs up is none; they come again.
class Attackers {
 public:
  // socket: that of calls.
  explicit Attackers(const std::filesystem::path& socket);
  ~Attackers();  // hangs up
  Attackers(const Attackers&) = delete;
  Attackers& operator=(const Attackers&) = delete;

  // How many connections they have made.
  [[nodiscard]] int connections() const { return m_connections; }

 private:
  void work(const Attack& attack, const std::filesystem::path& socket);
  void live(const Attack& attack, const std::filesystem::path& socket);

  std::atomic<bool> m_over{false};
  std::atomic<int> m_connections{0};
  std::deque<std::thread> m_threads;
};

}  // namespace load
