#pragma once

#include "MessageCodec.h"

namespace host {

// A Method as MessagePack: [name, type, [[parameter name, direction, value], ...]]; name: str; type
// and direction: int 0 or 1; value: int of 32 bits, str (any bytes) or bool.
// Decoding is strict: exactly this shape, no bytes after it, at most 1 MiB; on failure the Method
// is left as it was. Owner: anyone. Thread: any.
class MessagePackCodec final : public MessageCodec {
 public:
  void encode(Method& method, std::iostream& stream) override;
  [[nodiscard]] bool decode(std::iostream& stream, Method& method) override;
};

}  // namespace host
