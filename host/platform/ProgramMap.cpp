#include "platform/ProgramMap.h"

#include <unistd.h>

namespace host {
namespace {

bool canBeExecuted(const std::string& path) {
  return access(path.c_str(), X_OK) == 0;
}

std::string baseName(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

}  // namespace

ProgramMap& ProgramMap::instance() {
  static auto& map = *new ProgramMap;
  return map;
}

void ProgramMap::set(const std::string& devicePath, const std::string& path) {
  const std::lock_guard lock(m_mutex);
  m_paths[devicePath] = path;
}

void ProgramMap::setStandInFolder(const std::string& folder) {
  const std::lock_guard lock(m_mutex);
  m_standIns = folder;
}

void ProgramMap::allowDevicePrograms() {
  const std::lock_guard lock(m_mutex);
  m_devicePrograms = true;
}

void ProgramMap::clear() {
  const std::lock_guard lock(m_mutex);
  m_paths.clear();
  m_standIns.clear();
  m_devicePrograms = false;
}

std::optional<std::string> ProgramMap::resolve(const std::string& devicePath) const {
  const std::lock_guard lock(m_mutex);
  const auto found = m_paths.find(devicePath);
  if (found != m_paths.end()) return found->second;
  const std::string standIn = m_standIns + "/" + baseName(devicePath);
  if (!m_standIns.empty() && canBeExecuted(standIn)) return standIn;
  return m_devicePrograms ? std::optional(devicePath) : std::nullopt;
}

}  // namespace host
