#pragma once

#include <filesystem>

#include "support/TemporaryFolder.h"

namespace simulation {

// The private folder that a telephone lives in, and works in, while the object lives.
class SimulationFolder {
 public:
  SimulationFolder();
  ~SimulationFolder();
  SimulationFolder(const SimulationFolder&) = delete;
  SimulationFolder& operator=(const SimulationFolder&) = delete;

 private:
  const std::filesystem::path m_former = std::filesystem::current_path();
  const support::TemporaryFolder m_folder;
};

}  // namespace simulation
