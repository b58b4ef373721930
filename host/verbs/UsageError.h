#pragma once

#include <stdexcept>

namespace host {

// A wrong command line or scenario line. The text is one line: what was wrong, then what would be
// right.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace host
