#pragma once

#include <stdexcept>

namespace host {

// A failure to show to the user: one line that says what was wrong and what would be right.
struct Error : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace host
