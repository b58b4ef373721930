#pragma once

#include "MessageCodec.h"

namespace host {

// A Method as JSON, for people and scripts:
//   {"name":"setTime","type":0,"parameters":[{"name":"setTimeHours","direction":0,"value":8}, ...]}
// value: integer of 32 bits, string or boolean. Reading, "type" (0), "direction" (0) and
// "parameters" (none) may be left out, members come in any order, and nothing else is accepted: no
// other member, none twice, no other type, at most 1 MiB. Written text is UTF-8; other bytes become
// U+FFFD. On failure the Method is left as it was. Owner: anyone. Thread: any.
class JsonCodec final : public MessageCodec {
 public:
  void encode(Method& method, std::iostream& stream) override;
  [[nodiscard]] bool decode(std::iostream& stream, Method& method) override;
};

}  // namespace host
