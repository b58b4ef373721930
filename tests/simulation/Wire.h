#pragma once

#include <string>

#include "simulation/Step.h"

namespace simulation {

// Appends one field of a message: its length, a colon, its bytes.
void putField(std::string& bytes, const std::string& field);

// The bytes of a remote request in the codec "plain": method name, type, and four fields for each
// parameter: name, direction, type, value.
[[nodiscard]] std::string wireOf(const Step& call);

}  // namespace simulation
