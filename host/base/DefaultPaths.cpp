#include "base/DefaultPaths.h"

#include <cstdlib>

#include "base/Error.h"

namespace host {

const char* const kInstalledPlugin = CLOCK_PLUGIN_DIR "/libClockService.so";

namespace {

constexpr const char* kFolder = "clockhost";
constexpr const char* kSocket = "clockhost.sock";

// An XDG folder counts only when it is absolute.
std::optional<std::filesystem::path> folder(const Environment& environment, const char* name) {
  const auto text = environment(name);
  if (!text || !std::filesystem::path(*text).is_absolute()) return std::nullopt;
  return *text;
}

std::filesystem::path installedState(const Environment& environment) {
  if (const auto state = folder(environment, "XDG_STATE_HOME")) return *state / kFolder;
  if (const auto home = folder(environment, "HOME")) return *home / ".local" / "state" / kFolder;
  throw Error("no place to keep the state: set HOME or XDG_STATE_HOME");
}

// The build tree of programs in BUILD/bin or BUILD/bin/tests. Another folder below BUILD may be
// that of an installation.
std::optional<std::filesystem::path> buildTree(std::filesystem::path programs) {
  if (programs.filename() == "tests") programs = programs.parent_path();
  const std::filesystem::path build = programs.parent_path();
  if (!std::filesystem::exists(build / "CMakeCache.txt")) return std::nullopt;
  return build;
}

}  // namespace

DefaultPaths defaultPaths(const std::filesystem::path& program, const Environment& environment) {
  DefaultPaths paths;
  const std::filesystem::path programs = program.parent_path();
  if (const auto build = buildTree(programs)) {
    paths.standIns = *build / "bin";
    paths.plugin = *build / "lib" / "libClockService.so";
    paths.state = *build / "run" / "state";
    paths.socket = *build / "run" / kSocket;
    return paths;
  }
  const std::filesystem::path installation = programs.parent_path();
  paths.standIns = installation / "libexec" / kFolder;
  paths.plugin = installation / kInstalledPlugin;
  paths.state = installedState(environment);
  const auto runtime = folder(environment, "XDG_RUNTIME_DIR");
  paths.socket = runtime.value_or(paths.state) / kSocket;
  return paths;
}

DefaultPaths defaultPaths() {
  const auto environment = [](const char* name) -> std::optional<std::string> {
    const char* const text = std::getenv(name);
    if (text == nullptr) return std::nullopt;
    return text;
  };
  return defaultPaths(programFolder() / "clockhost", environment);
}

std::filesystem::path programFolder() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

}  // namespace host
