#pragma once

#include <exception>
#include <optional>
#include <string>

namespace simulation {

// What doing this threw, in words.
template <class Doing>
[[nodiscard]] std::optional<std::string> thrownBy(Doing doing) {
  try {
    doing();
    return std::nullopt;
  } catch (const std::exception& error) {
    return error.what();
  } catch (...) {
    return "no exception of the library's";
  }
}

}  // namespace simulation
