#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

// Called by the test plug-ins with what happens to them; defined by the test program. Thread: any.
extern "C" void testPluginNote(const char* text);

namespace host {

// The file of a test plug-in of a kind: "full", "without_proxy", "null_service", "null_invoker",
// "null_proxy".
[[nodiscard]] std::filesystem::path testPlugin(const std::string& kind);

// The notes so far, without those of listeners.
[[nodiscard]] std::vector<std::string> pluginNotes();
void clearPluginNotes();

// Waits for a note, a listener's too; false after the limit.
[[nodiscard]] bool waitForPluginNote(const std::string& text,
                                     std::chrono::milliseconds limit = std::chrono::seconds(10));

}  // namespace host
