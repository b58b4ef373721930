#pragma once

#include <filesystem>

#include "simulation/LastWords.h"

namespace simulation {

// The private folder that a telephone lives in, and works in, while the object lives: in memory
// where the system has such a place, since a life writes small files by the thousand.
class SimulationFolder {
 public:
  SimulationFolder();
  ~SimulationFolder();
  SimulationFolder(const SimulationFolder&) = delete;
  SimulationFolder& operator=(const SimulationFolder&) = delete;

 private:
  const std::filesystem::path m_former = std::filesystem::current_path();
  const std::filesystem::path m_path;
  const LastWords m_lastWords;
};

}  // namespace simulation
