#pragma once

#include <string>
#include <string_view>

namespace host {

// The text with `to` in place of each `from`. REQUIRES: `from` is not empty.
[[nodiscard]] inline std::string replaceAll(std::string text, std::string_view from,
                                            std::string_view to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

}  // namespace host
