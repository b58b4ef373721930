#pragma once

#include <filesystem>
#include <string>

namespace host {

// An unused name under which a damaged file is set aside: "FILE.damaged-1".
[[nodiscard]] inline std::string damagedName(const std::string& file) {
  for (int number = 1;; ++number) {
    std::string name = file + ".damaged-" + std::to_string(number);
    if (!std::filesystem::exists(std::filesystem::symlink_status(name))) return name;
  }
}

}  // namespace host
