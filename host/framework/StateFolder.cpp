#include "framework/StateFolder.h"

#include "base/Mutex.h"

namespace host {
namespace {

struct Folder {
  Mutex mutex;
  std::string path CLOCK_GUARDED_BY(mutex);
};

Folder& folder() {
  static auto& instance = *new Folder;
  return instance;
}

}  // namespace

void setStorageFolder(const std::string& path) {
  Folder& state = folder();
  const MutexLock lock(state.mutex);
  state.path = path;
}

std::string storageFolder() {
  Folder& state = folder();
  const MutexLock lock(state.mutex);
  return state.path;
}

}  // namespace host
