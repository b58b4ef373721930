#include "simulation/SimulationFolder.h"

#include <system_error>

#include "platform/StateFolder.h"

namespace simulation {

SimulationFolder::SimulationFolder() {
  for (const char* const name : {"data", "ipc", "state"}) {
    std::filesystem::create_directory(m_folder / name);
  }
  std::filesystem::current_path(m_folder.path());
  host::setStorageFolder(m_folder / "state");
}

SimulationFolder::~SimulationFolder() {
  std::error_code ignored;
  std::filesystem::current_path(m_former, ignored);
}

}  // namespace simulation
