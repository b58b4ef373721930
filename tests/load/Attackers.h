#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>

#include "load/Crowd.h"
#include "load/Effects.h"

namespace load {

// One way to take more of a host than is due: bytes that are sent again and again, and hardly read.
struct Attack {
  const char* name;
  bool control;       // at the socket of control requests
  std::string bytes;  // of one round; some rounds are one connection
  int rounds;
  bool reads;           // what comes between rounds; else it stays unread
  const char* expects;  // part of an answer that shows the effect; empty: there is none to wait for
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

  // How many connections they have made, beside the crowds'.
  [[nodiscard]] int connections() const { return m_connections; }

  // So far: rounds or connections that met what they expect, and what the crowds were answered.
  [[nodiscard]] Effects effects() const;

 private:
  struct Attacker {
    explicit Attacker(Attack what) : attack(std::move(what)) {}

    Attack attack;
    std::atomic<std::uint64_t> met{0};
    std::thread thread;
  };

  void work(Attacker& attacker, const std::filesystem::path& socket);
  void live(Attacker& attacker, const std::filesystem::path& socket);

  std::atomic<bool> m_over{false};
  std::atomic<int> m_connections{0};
  std::deque<Attacker> m_attackers;
  Crowd m_observers;
  Crowd m_bursters;
};

// The one name that an attack makes the host look up.
inline constexpr const char* kSilentName = "silent.example";

}  // namespace load
