#include "remote/CodecTable.h"

namespace host {

MessageCodec* CodecTable::find(std::string_view name) {
  if (name == kDefaultCodec) return &m_messagePack;
  if (name == "json") return &m_json;
  return nullptr;
}

std::vector<std::string> CodecTable::names() {
  return {std::string(kDefaultCodec), "json"};
}

}  // namespace host
