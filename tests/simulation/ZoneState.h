#pragma once

#include <cstdlib>
#include <string>

#include "support/FileContent.h"

namespace simulation {

// The TZ of this process, and the content of the script (empty without one).
[[nodiscard]] inline std::string zoneInForce() {
  const char* const zone = std::getenv("TZ");  // NOLINT(concurrency-mt-unsafe): nothing else runs
  return zone == nullptr ? "(none)" : zone;
}
[[nodiscard]] inline std::string script() {
  return support::contentOf("state/setupTZ.sh");
}

}  // namespace simulation
