#include "platform/StateFolder.h"

#include <mutex>

namespace host {
namespace {

struct Folder {
  std::mutex mutex;
  std::string path;
};

Folder& folder() {
  static auto& instance = *new Folder;
  return instance;
}

}  // namespace

void setStorageFolder(const std::string& path) {
  const std::lock_guard lock(folder().mutex);
  folder().path = path;
}

std::string storageFolder() {
  const std::lock_guard lock(folder().mutex);
  return folder().path;
}

}  // namespace host
