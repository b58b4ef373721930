#pragma once

#include <string>

namespace host {

class Plugin;
struct Scenario;

// Runs a scenario: steps and expectations for a telephone, in virtual time, with a temporary state
// folder and device root. The result is empty when it passed, else what to show: the line
// "FILE:LINE: expected ..., got ...", then the virtual time and the last events, each on a line of
// its own. Thread: its caller becomes the framework thread. A run changes TZ, process clock, device
// root and log level of the process; one run at a time. Failure: never thrown.
[[nodiscard]] std::string runScenario(Plugin& plugin, const Scenario& scenario,
                                      const std::string& file);

}  // namespace host
