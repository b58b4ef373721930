#pragma once

#include <string_view>

namespace host {

// Writes the whole text, also to a descriptor that another process has made non-blocking. Thread:
// any. False: errno says why not all was written.
[[nodiscard]] bool writeAll(int descriptor, std::string_view text);

}  // namespace host
