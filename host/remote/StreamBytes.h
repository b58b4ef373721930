#pragma once

#include <iosfwd>
#include <optional>
#include <string>

namespace host {

// The unread rest of a stream, at most kMaxPayload bytes; nothing when it is longer.
// Thread: the stream's.
[[nodiscard]] std::optional<std::string> readToEnd(std::iostream& stream);

}  // namespace host
