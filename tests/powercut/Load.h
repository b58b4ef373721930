#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <random>
#include <string>
#include <thread>

#include "integration/RestartableHost.h"
#include "integration/SetLedger.h"
#include "powercut/SavedTimes.h"

namespace powercut {

// What the users of a telephone have been promised so far, over all its restarts.
struct Promises {
  Promises();  // of a telephone that was never set

  integration::SetLedger sets;
  SavedTimes times;
  std::uint64_t lastValue = 0;  // each set has a value of its own
  std::uint64_t setsAcknowledged = 0;
  std::uint64_t timesAcknowledged = 0;
};

// Sets and NTP reports as fast as the host takes them, from two clients, until the host is gone.
// Owner: a test, which has the host killed. Until end() the promises are its own. Failure: what a
// client met first, beside the host's end, is fault().
class Load {
 public:
  Load(const integration::RestartableHost& host, Promises& promises, std::uint64_t seed);
  ~Load();  // as end()
  Load(const Load&) = delete;
  Load& operator=(const Load&) = delete;

  // Waits until both clients have seen the host go.
  void end();

  // At any time. Empty when there is none.
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
