#pragma once

#include <atomic>
#include <cstdint>
#include <random>
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
// Owner: a test, which has the host killed. While it lives the promises are its own.
class Load {
 public:
  Load(const integration::RestartableHost& host, Promises& promises, std::uint64_t seed);
  ~Load();  // waits until both clients have seen the host go
  Load(const Load&) = delete;
  Load& operator=(const Load&) = delete;

 private:
  void set();
  void report();

  const integration::RestartableHost& m_host;
  Promises& m_promises;
  std::mt19937_64 m_random;
  std::thread m_setter;
  std::thread m_reporter;
};

}  // namespace powercut
