#pragma once

#include <array>
#include <iostream>
#include <optional>
#include <string>

#include "remote/Frame.h"

namespace host {

// The unread rest of a stream, at most kMaxPayload bytes; nothing when it is longer.
// Thread: the stream's.
[[nodiscard]] inline std::optional<std::string> readToEnd(std::iostream& stream) {
  std::string bytes;
  std::array<char, 512> part;
  for (;;) {
    const std::streamsize got = stream.rdbuf()->sgetn(part.data(), part.size());
    bytes.append(part.data(), static_cast<std::size_t>(got));
    if (bytes.size() > kMaxPayload) return std::nullopt;
    if (got < static_cast<std::streamsize>(part.size())) return bytes;
  }
}

}  // namespace host
