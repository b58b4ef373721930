#include "framework/StateFolder.h"

#include <utility>

#include "base/Mutex.h"

namespace host {
namespace {

constinit Mutex g_folderMutex;

// Never destroyed, because threads may outlive static destruction.
std::string& folder() CLOCK_REQUIRES(g_folderMutex) {
  static auto& path = *new std::string;
  return path;
}

StoredListener& storedListener() CLOCK_REQUIRES(g_folderMutex) {
  static auto& listener = *new StoredListener;
  return listener;
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

void onStored(StoredListener listener) {
  const MutexLock lock(g_folderMutex);
  storedListener() = std::move(listener);
}

void reportStored(const std::string& name, const std::string& before, const std::string& after) {
  StoredListener listener;
  {
    const MutexLock lock(g_folderMutex);
    listener = storedListener();
  }
  if (listener) listener(name, before, after);
}

}  // namespace host
