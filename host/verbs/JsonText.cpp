#include "verbs/JsonText.h"

#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "base/PrintableText.h"
#include "base/Utf8.h"

namespace host {

// Only strings can hold control characters: JSON on one line has none elsewhere.
std::string jsonLine(const Json& json) {
  const std::string whole = json.dump(-1, ' ', false, Json::error_handler_t::replace);
  std::string line;
  line.reserve(whole.size());
  for (std::size_t at = 0; at < whole.size();) {
    const Utf8Character character = utf8CharacterAt(whole, at);
    if (isControl(character.code)) {
      std::array<char, 7> escape{};
      std::snprintf(escape.data(), escape.size(), "\\u%04x", character.code);
      line += escape.data();
    } else {
      line.append(whole, at, character.length);
    }
    at += character.length;
  }
  return line;
}

}  // namespace host
