#include "host/runtime/TestPlugins.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>

#include "host/runtime/TestPluginNotes.h"

namespace host {
namespace {

std::mutex mutex;
std::condition_variable changed;
std::vector<std::string> notes;

}  // namespace

std::filesystem::path testPlugin(const std::string& kind) {
  const auto program = std::filesystem::read_symlink("/proc/self/exe");
  return program.parent_path() / ("libtest_plugin_" + kind + ".so");
}

std::vector<std::string> pluginNotes() {
  const std::lock_guard lock(mutex);
  std::vector<std::string> told = notes;
  std::erase_if(told, [](const std::string& note) { return note.rfind("listener", 0) == 0; });
  return told;
}

void clearPluginNotes() {
  const std::lock_guard lock(mutex);
  notes.clear();
}

bool waitForPluginNote(const std::string& text) {
  std::unique_lock lock(mutex);
  return changed.wait_for(lock, std::chrono::seconds(10), [&] {
    return std::find(notes.begin(), notes.end(), text) != notes.end();
  });
}

}  // namespace host

void testPluginNote(const char* text) {
  const std::lock_guard lock(host::mutex);
  host::notes.emplace_back(text);
  host::changed.notify_all();
}
