#include "interpose/DeviceRoot.h"

#include <atomic>
#include <list>
#include <string_view>

#include "base/Mutex.h"

namespace host {
namespace {

// Without construction or lock, because every file call of the process reads it, even early ones.
constinit std::atomic<const std::string*> g_root{nullptr};

constexpr int kNone = -1;
constinit std::atomic<int> g_reportPipe{kNone};

// Never frees a root, because another thread may still read an old one.
const std::string* keep(const std::string& root) {
  static Mutex mutex;
  static auto* const roots CLOCK_POINTEE_GUARDED_BY(mutex) = new std::list<std::string>;
  const MutexLock lock(mutex);
  for (const std::string& known : *roots) {
    if (known == root) return &known;
  }
  return &roots->emplace_back(root);
}

bool startsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

bool isBelow(std::string_view path, std::string_view folder) {
  return startsWith(path, folder) && path.size() > folder.size() && path[folder.size()] == '/';
}

bool isDevicePath(std::string_view path) {
  return startsWith(path, "/data/") || startsWith(path, "/tmp/votk/");
}

}  // namespace

void setDeviceRoot(const std::string& root) {
  std::string_view kept = root;
  while (!kept.empty() && kept.back() == '/') kept.remove_suffix(1);
  g_root.store(kept.empty() ? nullptr : keep(std::string(kept)), std::memory_order_release);
}

std::string deviceRoot() {
  const std::string* root = g_root.load(std::memory_order_acquire);
  return root == nullptr ? std::string() : *root;
}

std::string hostPath(const std::string& devicePath) {
  const std::string* root = g_root.load(std::memory_order_acquire);
  if (root == nullptr || !isDevicePath(devicePath) || isBelow(devicePath, *root)) return devicePath;
  return *root + devicePath;
}

void setReportPipe(int descriptor) {
  g_reportPipe.store(descriptor);
}

void dropReportPipe(int descriptor) {
  g_reportPipe.compare_exchange_strong(descriptor, kNone);
}

std::string mappedPath(const std::string& devicePath) {
  const int pipe = g_reportPipe.load();
  if (pipe == kNone || devicePath != kReportPipePath) return hostPath(devicePath);
  return "/proc/self/fd/" + std::to_string(pipe);
}

}  // namespace host
