#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace host {

// The file of a plug-in of the tests: "full", "without_proxy", "null_service", "null_invoker",
// "null_proxy".
[[nodiscard]] std::filesystem::path testPlugin(const std::string& kind);

// What the plug-ins have told so far, without what their listeners told; and starting over.
[[nodiscard]] std::vector<std::string> pluginNotes();
void clearPluginNotes();

// Waits until a plug-in has told `text`; false when it does not in ten seconds.
[[nodiscard]] bool waitForPluginNote(const std::string& text);

}  // namespace host
