#include "verbs/ReadJson.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "base/Error.h"
#include "base/PrintableText.h"

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

// JSON has no NUL. The library takes one for the end, and passes over what follows.
bool hasNul(std::string_view text) {
  return text.find('\0') != std::string_view::npos;
}

// Looks at a request while it is read, and ends the reading at the first thing that is wrong.
class RequestBounds {
 public:
  void meet(Json::parse_event_t event, const Json& parsed) {
    using Event = Json::parse_event_t;
    if (event == Event::object_start || event == Event::array_start) open();
    if (event == Event::object_end || event == Event::array_end) m_names.pop_back();
    if (event == Event::value) count();
    if (event == Event::key) name(parsed.get_ref<const std::string&>());
  }

 private:
  void open() {
    count();
    m_names.emplace_back();
    if (m_names.size() <= kDeepestJson) return;
    throw Error("the request is nested more than " + std::to_string(kDeepestJson) + " deep");
  }

  void count() {
    if (++m_count <= kMostInRequest) return;
    throw Error("the request holds more than " + std::to_string(kMostInRequest) +
                " members and values");
  }

  void name(const std::string& text) {
    count();
    if (m_names.back().insert(text).second) return;
    throw Error("the request holds " + quotedText(text) + " twice; name each member once");
  }

  std::size_t m_count = 0;
  std::vector<std::set<std::string>> m_names;  // of the members of what is open
};

}  // namespace

Json readRequest(std::string_view text) {
  if (hasNul(text)) throw Error("the request holds a NUL byte");
  RequestBounds bounds;
  const auto look = [&](int, Json::parse_event_t event, const Json& parsed) {
    bounds.meet(event, parsed);
    return true;
  };
  Json request = Json::parse(text, look, false);
  if (!request.is_object()) throw Error("the request is no JSON object");
  return request;
}

Json readJson(std::string_view text) {
  if (depthOf(text) > kDeepestJson || hasNul(text)) return Json(Json::value_t::discarded);
  return Json::parse(text, nullptr, false);
}

}  // namespace host
