#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace load {

// What one attack has done to a host, in numbers. An attack without effect proves nothing.
struct Effect {
  std::string name;
  std::uint64_t count;
};

using Effects = std::vector<Effect>;

}  // namespace load
