#include "framework/ProgramMap.h"

#include <unistd.h>

#include <utility>

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
  const MutexLock lock(m_mutex);
  m_paths[devicePath] = path;
}

void ProgramMap::setStandInFolder(const std::string& folder) {
  const MutexLock lock(m_mutex);
  m_standIns = folder;
}

void ProgramMap::allowDevicePrograms() {
  const MutexLock lock(m_mutex);
  m_devicePrograms = true;
}

void ProgramMap::giveChannel(const std::string& devicePath, std::function<Descriptor()> open) {
  const MutexLock lock(m_mutex);
  m_channels[devicePath] = std::move(open);
}

void ProgramMap::setOutput(std::function<Descriptor(const std::string& program)> open) {
  const MutexLock lock(m_mutex);
  m_openOutput = std::move(open);
}

void ProgramMap::clear() {
  const MutexLock lock(m_mutex);
  m_paths.clear();
  m_channels.clear();
  m_openOutput = {};
  m_standIns.clear();
  m_devicePrograms = false;
}

std::optional<MappedProgram> ProgramMap::resolve(const std::string& devicePath) const {
  const MutexLock lock(m_mutex);
  auto program = fileOf(devicePath);
  const auto channel = m_channels.find(devicePath);
  if (program && channel != m_channels.end()) program->openChannel = channel->second;
  if (program && m_openOutput) {
    program->openOutput = [open = m_openOutput, name = baseName(devicePath)] { return open(name); };
  }
  return program;
}

std::optional<MappedProgram> ProgramMap::fileOf(const std::string& devicePath) const {
  const auto found = m_paths.find(devicePath);
  if (found != m_paths.end()) return MappedProgram{found->second, false, {}, {}};
  const std::string standIn = m_standIns + "/" + baseName(devicePath);
  if (!m_standIns.empty() && canBeExecuted(standIn)) return MappedProgram{standIn, true, {}, {}};
  if (!m_devicePrograms) return std::nullopt;
  return MappedProgram{devicePath, false, {}, {}};
}

}  // namespace host
