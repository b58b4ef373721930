#pragma once

#include <functional>
#include <string>

namespace simulation {

// How a child of this program ended, and what it wrote to one of its descriptors.
struct End {
  int status;  // exit status; 128 + signal
  std::string text;
};

// Lets a child do this. It ends by itself or with status 0. REQUIRES: this thread is the only one.
[[nodiscard]] End endOf(int descriptor, const std::function<void()>& doing);

}  // namespace simulation
