#pragma once

#include <filesystem>
#include <iosfwd>

namespace host {

class Plugin;

// Runs scenario files: what to do with a telephone and what to expect of it, in virtual time, in a
// temporary state folder and a temporary device root of its own.
// Owner: its creator; the plug-in outlives it. Thread: its caller becomes the framework thread. It
// owns the process while it runs: TZ, process clock, device root, log level; one at a time.
// Failure: never thrown; one line on `errors` and an exit status.
class ScenarioRunner {
 public:
  enum Status : int { passed = 0, failed = 1, wrongFile = 2 };

  ScenarioRunner(Plugin& plugin, std::ostream& errors);

  // failed: "FILE:LINE: expected ..., came ...". wrongFile: nothing was run;
  // "FILE:LINE: what is there, what was expected there".
  [[nodiscard]] Status run(const std::filesystem::path& file);

 private:
  Plugin& m_plugin;
  std::ostream& m_errors;
};

}  // namespace host
