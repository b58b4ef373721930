#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "remote/JsonCodec.h"
#include "remote/MessagePackCodec.h"

namespace host {

inline constexpr std::string_view kDefaultCodec = "msgpack";

// The codecs of the host by name. Immutable. Thread: any.
class CodecTable {
 public:
  // Null for an unknown name. Owned by the table.
  [[nodiscard]] MessageCodec* find(std::string_view name) {
    if (name == kDefaultCodec) return &m_messagePack;
    return name == "json" ? &m_json : nullptr;
  }

  [[nodiscard]] static std::vector<std::string> names() {
    return {std::string(kDefaultCodec), "json"};
  }

 private:
  MessagePackCodec m_messagePack;
  JsonCodec m_json;
};

}  // namespace host
