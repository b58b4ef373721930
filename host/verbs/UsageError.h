#pragma once

#include <stdexcept>

namespace host {

// What a person typed cannot be understood. The text is one line that names what was wrong and what
// would be right.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace host
