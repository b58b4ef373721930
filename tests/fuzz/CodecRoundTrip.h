#pragma once

#include <optional>
#include <string_view>

#include "Method.h"

class MessageCodec;

namespace fuzz {

// Checks a codec's contract on these bytes: a failed decoding leaves the Method unchanged; a
// decoded Method passes holdRoundTrip. Returns the decoded Method, if any.
std::optional<Method> holdCodec(MessageCodec& codec, std::string_view bytes);

// Checks that encoding and decoding yields the same Method, and encoding that again the same bytes.
// of: the bytes that the Method was decoded from.
void holdRoundTrip(MessageCodec& codec, Method& method, std::string_view of);

}  // namespace fuzz
