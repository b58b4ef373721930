#include "framework/StateFolder.h"

#include "base/Mutex.h"

namespace host {
namespace {

constinit Mutex g_folderMutex;

// Never destroyed, because threads may outlive static destruction.
std::string& folder() CLOCK_REQUIRES(g_folderMutex) {
  static auto& path = *new std::string;
  return path;
}

}  // namespace

void setStorageFolder(const std::string& path) {
  const MutexLock lock(g_folderMutex);
  folder() = path;
}

std::string storageFolder() {
  const MutexLock lock(g_folderMutex);
  return folder();
}

}  // namespace host
