#pragma once

#include <filesystem>
#include <iosfwd>

#include "scenario/SuiteOptions.h"

namespace host {

class Plugin;

enum SuiteStatus : int { suitePassed = 0, suiteFailed = 1, suiteWrong = 2 };

// Reads all files, runs them and reports: failures on `err`, or with TAP on `out`; for several
// files a summary on `out`, and on a terminal a line of progress on `err`. suiteWrong: a file could
// not be understood, and nothing was run. SIGINT and SIGTERM end the process after the
// report. Failure: host::Error.
[[nodiscard]] SuiteStatus runScenarioSuite(const std::filesystem::path& plugin,
                                           const SuiteOptions& options, std::ostream& out,
                                           std::ostream& err, bool onTerminal);

}  // namespace host
