#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "load/Crowd.h"

namespace load {

// What each attack did to the host, as a count. An attack without effect proves nothing.
using Effects = std::vector<std::pair<std::string, std::uint64_t>>;

// One way to take more of a host than its share: bytes sent again and again.
struct Attack {
  const char* name;
  bool control;        // at the control socket
  std::string bytes;   // of one round
  int rounds;          // of one connection
  bool reads;          // reads the answers after each round; else leaves them unread
  std::string effect;  // part of an answer that shows the effect; empty: the host itself shows it
};

// Attacking clients, each on a thread of its own, and two crowds, until they are destroyed. Owner:
// a test. Thread: the test's. Failure: an attacker that the host disconnects connects again.
class Attackers {
 public:
  explicit Attackers(const std::filesystem::path& callSocket);
  ~Attackers();  // disconnects
  Attackers(const Attackers&) = delete;
  Attackers& operator=(const Attackers&) = delete;

  // How many connections the attackers made, without the crowds'.
  [[nodiscard]] int connections() const { return m_connections; }

  // So far: rounds or connections that saw their effect, and the answers to the crowds.
  [[nodiscard]] Effects effects() const;

 private:
  struct Attacker {
    explicit Attacker(Attack what) : attack(std::move(what)) {}

    const Attack attack;
    std::atomic<std::uint64_t> seen{0};
    std::thread thread;
  };

  void work(Attacker& attacker, const std::filesystem::path& socket);
  void attackOnce(Attacker& attacker, int socket);
  void readAnswers(Attacker& attacker, int socket);

  std::atomic<bool> m_over{false};
  std::atomic<int> m_connections{0};
  std::deque<Attacker> m_attackers;
  Crowd m_observers;
  Crowd m_bursts;
};

// The name that one attack makes the host look up.
inline constexpr const char* kSilentName = "silent.example";

}  // namespace load
