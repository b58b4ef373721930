#include "simulation/SimulationFolder.h"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "platform/StateFolder.h"

namespace simulation {
namespace {

std::filesystem::path place() {
  constexpr const char* inMemory = "/dev/shm";
  return access(inMemory, W_OK | X_OK) == 0 ? std::filesystem::path(inMemory)
                                            : std::filesystem::temp_directory_path();
}

std::filesystem::path freshFolder() {
  std::string name = (place() / "clock-life-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), "mkdtemp");
  }
  return name;
}

}  // namespace

SimulationFolder::SimulationFolder() : m_path(freshFolder()), m_lastWords(m_path) {
  for (const char* const name : {"data", "ipc", "state"}) {
    std::filesystem::create_directory(m_path / name);
  }
  std::filesystem::current_path(m_path);
  host::setStorageFolder(m_path / "state");
}

SimulationFolder::~SimulationFolder() {
  std::error_code ignored;
  std::filesystem::current_path(m_former, ignored);
  std::filesystem::remove_all(m_path, ignored);
}

}  // namespace simulation
