#include "HostProgram.h"

#include <linux/magic.h>
#include <sys/vfs.h>

#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace bench {
namespace {

Words joined(Words words, const Words& more) {
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

}  // namespace

HostProgram::HostProgram(const Words& options, Words launcher, std::string program)
    : RestartableHost(std::move(program), joined({"--speed", "1"}, options)) {
  launch(joined(std::move(launcher), words()));
}

HostProgram::~HostProgram() {
  end(SIGTERM);
}

BaselineProgram::BaselineProgram(const std::string& name, const std::string& argument,
                                 const std::filesystem::path& folder)
    : m_program(m_folder.path(), name, {folder / ("baseline_" + name), socket(), argument}) {}

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
