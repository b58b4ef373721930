#pragma once

#include <cstddef>

namespace bench {

// While it lives this process starts no program: whoever asks the system for one is told that it is
// not there, and counted. So all is measured that leads to the start and nothing of the program.
// Owner: a measurement, one at a time.
class SpawnCount {
 public:
  SpawnCount();
  ~SpawnCount();
  SpawnCount(const SpawnCount&) = delete;
  SpawnCount& operator=(const SpawnCount&) = delete;

  [[nodiscard]] std::size_t starts() const;
};

}  // namespace bench
