// The program has its own way to start others, which the host's parts in it find before the C
// library's.
#include "SpawnCount.h"

#include <dlfcn.h>
#include <spawn.h>

#include <atomic>
#include <cerrno>

namespace bench {
namespace {

std::atomic<bool> g_none{false};
std::atomic<std::size_t> g_starts{0};

using Spawn = decltype(&::posix_spawn);

Spawn librarySpawn() {
  static const auto spawn = reinterpret_cast<Spawn>(dlsym(RTLD_NEXT, "posix_spawn"));
  return spawn;
}

}  // namespace

SpawnCount::SpawnCount() {
  g_starts = 0;
  g_none = true;
}

SpawnCount::~SpawnCount() {
  g_none = false;
}

std::size_t SpawnCount::starts() const {
  return g_starts;
}

}  // namespace bench

extern "C" int posix_spawn(pid_t* process, const char* program,
                           const posix_spawn_file_actions_t* actions,
                           const posix_spawnattr_t* attributes, char* const* arguments,
                           char* const* environment) {
  if (!bench::g_none) {
    return bench::librarySpawn()(process, program, actions, attributes, arguments, environment);
  }
  ++bench::g_starts;
  return ENOENT;
}
