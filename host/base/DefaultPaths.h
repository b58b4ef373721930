#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace host {

// From the folder of an installation: lib/libClockService.so, or what the build says.
extern const char* const kInstalledPlugin;

// The paths that apply unless the command line names others.
struct DefaultPaths {
  std::filesystem::path plugin;
  std::filesystem::path state;     // folder of the stores
  std::filesystem::path socket;    // of the running host
  std::filesystem::path standIns;  // folder of stand-ins for the device's programs
};

using Environment = std::function<std::optional<std::string>(const char* name)>;

// For a program in a build tree: state and socket are under the build's run/. For an installed one:
// under $XDG_STATE_HOME (or ~/.local/state) and $XDG_RUNTIME_DIR (or the state folder).
// Throws host::Error when there is neither $XDG_STATE_HOME nor $HOME.
[[nodiscard]] DefaultPaths defaultPaths(const std::filesystem::path& program,
                                        const Environment& environment);

// The same for this process.
[[nodiscard]] DefaultPaths defaultPaths();

// The folder of this process's program, where clockhost and clockctl are, too.
[[nodiscard]] std::filesystem::path programFolder();

}  // namespace host
