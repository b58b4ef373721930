#pragma once

#include <string>
#include <vector>

namespace host {

// What a child gets of the "NAME=value" texts that it is started with. A stand-in of the build gets
// only the variables that it knows. None gets a CLOCKHOST_CLOCK_FD but its own: the number of its
// channel, or none when that is -1.
[[nodiscard]] std::vector<std::string> childEnvironment(const std::vector<std::string>& given,
                                                        bool standIn, int channel);

}  // namespace host
