#pragma once

#include <stdexcept>

namespace host {

// A failure to be shown to a person: one line that names what was wrong, and what would be right.
struct Error : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace host
