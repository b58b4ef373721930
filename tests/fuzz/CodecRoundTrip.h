#pragma once

#include <optional>
#include <string_view>

#include "Method.h"

class MessageCodec;

namespace fuzz {

// Holds a codec to its contract on these bytes: what it cannot decode leaves the Method as it was;
// what it can decode comes back the same after encoding, and is encoded the same way again. The
// Method that came out of the bytes, if one did.
std::optional<Method> holdCodec(MessageCodec& codec, std::string_view bytes);

// That the Method is the same after encoding and decoding. of: what it came out of.
void holdRoundTrip(MessageCodec& codec, Method& method, std::string_view of);

}  // namespace fuzz
