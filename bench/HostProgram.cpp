#include "HostProgram.h"

#include <linux/magic.h>
#include <sys/vfs.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace bench {
namespace {

Words joined(Words words, const Words& more) {
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

// Removes the socket of an earlier program.
std::filesystem::path freshSocket(const support::TemporaryFolder& folder, const std::string& name) {
  std::filesystem::remove(folder / name);
  return folder / name;
}

}  // namespace

HostProgram::HostProgram(const support::TemporaryFolder& folder, const std::filesystem::path& state,
                         const Words& options, const Words& environment)
    : m_socket(freshSocket(folder, "host")),
      m_controlSocket(freshSocket(folder, "host.control")),
      m_child(joined({BENCH_CLOCKHOST, "--plugin", BENCH_PLUGIN, "--state", state, "--socket",
                      m_socket, "--device-root", folder / "root"},
                     options),
              environment) {}

BaselineProgram::BaselineProgram(const support::TemporaryFolder& folder, const std::string& name,
                                 const std::string& argument)
    : m_socket(freshSocket(folder, name)),
      m_child({std::string(BENCH_BASELINES) + "/baseline_" + name, m_socket, argument}) {}

std::filesystem::path diskFolder() {
  struct statfs found {};
  if (statfs(BENCH_DISK, &found) != 0) {
    throw std::system_error(errno, std::generic_category(), BENCH_DISK);
  }
  if (found.f_type == TMPFS_MAGIC || found.f_type == RAMFS_MAGIC) {
    throw std::runtime_error(std::string(BENCH_DISK) + " is in memory; build on a disk");
  }
  return BENCH_DISK;
}

}  // namespace bench
