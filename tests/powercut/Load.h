#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <random>
#include <string>
#include <thread>

#include "integration/RestartableHost.h"
#include "integration/SetLedger.h"

namespace powercut {

// What a telephone has acknowledged so far, over all its restarts. The setter uses the first group
// of members, the reporter the second.
struct Promises {
  Promises();  // of a telephone that was never set

  integration::SetLedger sets;
  std::uint64_t lastValue = 0;  // makes the value of each set unique
  std::uint64_t setsAcknowledged = 0;

  integration::SetLedger savedTimes;      // one entry, kSavedTime
  std::int64_t lastTime = 1'767'225'600;  // 2026-01-01T00:00:00Z; moved on with each report
  std::uint64_t timesAcknowledged = 0;
};

inline constexpr const char* kSavedTime = "saved time";

// Sends sets and NTP reports as fast as the host takes them, from two threads, until the host ends.
// Owner: a test, which kills the host and uses the promises only after end(). Failure: the first
// fault other than the host's end is fault().
class Load {
 public:
  Load(const integration::RestartableHost& host, Promises& promises, std::uint64_t seed);
  ~Load();  // calls end()
  Load(const Load&) = delete;
  Load& operator=(const Load&) = delete;

  // Waits until both threads have noticed that the host has ended.
  void end();

  // Empty when there is none. Any thread, at any time.
  [[nodiscard]] std::string fault() const;

 private:
  void work(void (Load::*task)());
  void set();
  void report();

  const integration::RestartableHost& m_host;
  Promises& m_promises;
  std::mt19937_64 m_random;
  mutable std::mutex m_mutex;  // guards m_fault
  std::string m_fault;
  std::thread m_setter;
  std::thread m_reporter;
};

}  // namespace powercut
