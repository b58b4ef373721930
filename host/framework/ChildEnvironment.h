#pragma once

#include <string>
#include <vector>

namespace host {

// Selects the environment ("NAME=value") of a child. A stand-in of the build gets only the
// variables that it knows. CLOCKHOST_CLOCK_FD is replaced by the number of the child's own channel,
// or removed when that is -1.
[[nodiscard]] std::vector<std::string> childEnvironment(const std::vector<std::string>& given,
                                                        bool standIn, int channel);

}  // namespace host
