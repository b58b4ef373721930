#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

namespace simulation {

// A number that is all of the text. Nothing for any other text.
[[nodiscard]] inline std::optional<std::uint64_t> countIn(std::string_view text) {
  std::uint64_t number = 0;
  const auto end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  if (read.ec != std::errc() || read.ptr != end) return std::nullopt;
  return number;
}

}  // namespace simulation
