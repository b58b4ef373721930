#pragma once

#include <string>

#include "MessageCodec.h"
#include "Method.h"

namespace simulation {

// A codec that a person can read; see wireOf.
class PlainCodec final : public MessageCodec {
 public:
  void encode(Method& method, std::iostream& stream) override;
  bool decode(std::iostream& stream, Method& method) override;
};

// "1 getTime getTimeStringReturn/1="12:30"": type, name, parameters with direction and value.
[[nodiscard]] std::string describe(const Method& method);

}  // namespace simulation
