#pragma once

#include <filesystem>
#include <iosfwd>

namespace host {

class Plugin;

// Runs scenario files: steps and expectations for a telephone, in virtual time, with a temporary
// state folder and device root.
// Owner: its creator; the plug-in outlives it. Thread: its caller becomes the framework thread. A
// run changes TZ, process clock, device root and log level of the process; one run at a time.
// Failure: never thrown; one line on `errors` and an exit status.
class ScenarioRunner {
 public:
  enum Status : int { passed = 0, failed = 1, wrongFile = 2 };

  ScenarioRunner(Plugin& plugin, std::ostream& errors);

  // failed: "FILE:LINE: expected ..., got ...". wrongFile: nothing was run; "FILE:LINE: what was
  // wrong; what would be right".
  [[nodiscard]] Status run(const std::filesystem::path& file);

 private:
  Plugin& m_plugin;
  std::ostream& m_errors;
};

}  // namespace host
