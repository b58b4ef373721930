#include "host/runtime/TestPlugins.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>

namespace host {
namespace {

std::mutex g_mutex;
std::condition_variable g_changed;
std::vector<std::string> g_notes;

}  // namespace

std::filesystem::path testPlugin(const std::string& kind) {
  const auto program = std::filesystem::read_symlink("/proc/self/exe");
  return program.parent_path() / ("libtest_plugin_" + kind + ".so");
}

std::vector<std::string> pluginNotes() {
  const std::lock_guard lock(g_mutex);
  std::vector<std::string> notes = g_notes;
  std::erase_if(notes, [](const std::string& note) { return note.rfind("listener", 0) == 0; });
  return notes;
}

void clearPluginNotes() {
  const std::lock_guard lock(g_mutex);
  g_notes.clear();
}

bool waitForPluginNote(const std::string& text, std::chrono::milliseconds limit) {
  std::unique_lock lock(g_mutex);
  return g_changed.wait_for(lock, limit, [&] {
    return std::find(g_notes.begin(), g_notes.end(), text) != g_notes.end();
  });
}

}  // namespace host

void testPluginNote(const char* text) {
  const std::lock_guard lock(host::g_mutex);
  host::g_notes.emplace_back(text);
  host::g_changed.notify_all();
}
