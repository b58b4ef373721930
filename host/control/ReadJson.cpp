#include "control/ReadJson.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace host {
namespace {

// How many brackets are open at once, at most, outside of texts.
std::size_t depthOf(std::string_view text) {
  std::size_t open = 0;
  std::size_t deepest = 0;
  bool quoted = false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (quoted && c == '\\') ++at;
    if (c == '"') quoted = !quoted;
    if (quoted) continue;
    if (c == '[' || c == '{') deepest = std::max(deepest, ++open);
    if ((c == ']' || c == '}') && open > 0) --open;
  }
  return deepest;
}

}  // namespace

Json readJson(std::string_view text) {
  if (depthOf(text) > kDeepestJson) return Json(Json::value_t::discarded);
  return Json::parse(text, nullptr, false);
}

}  // namespace host
