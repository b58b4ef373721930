#include "framework/StateFolder.h"

#include "base/Mutex.h"

namespace host {
namespace {

constinit Mutex g_mutex;

// Never destroyed, because threads may outlive static destruction.
std::string& folder() CLOCK_REQUIRES(g_mutex) {
  static auto& path = *new std::string;
  return path;
}

}  // namespace

void setStorageFolder(const std::string& path) {
  const MutexLock lock(g_mutex);
  folder() = path;
}

std::string storageFolder() {
  const MutexLock lock(g_mutex);
  return folder();
}

}  // namespace host
