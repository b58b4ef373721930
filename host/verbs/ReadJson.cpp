#include "verbs/ReadJson.h"

#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "base/Error.h"
#include "base/PrintableText.h"

namespace host {
namespace {

// JSON has no NUL. The library takes one for the end, and ignores what follows.
bool hasNul(std::string_view text) {
  return text.find('\0') != std::string_view::npos;
}

// open: how many objects and arrays are open around the current one.
void requireBoundedDepth(int open) {
  if (open < static_cast<int>(kDeepestJson)) return;
  throw Error("the request is nested more than " + std::to_string(kDeepestJson) + " deep");
}

bool begins(Json::parse_event_t event) {
  return event == Json::parse_event_t::object_start || event == Json::parse_event_t::array_start;
}

// Checks a request while it is parsed, and stops at the first fault.
class RequestBounds {
 public:
  void check(int open, Json::parse_event_t event, const Json& parsed) {
    using Event = Json::parse_event_t;
    if (begins(event)) begin(open);
    if (event == Event::object_end || event == Event::array_end) m_names.pop_back();
    if (event == Event::value) count();
    if (event == Event::key) name(parsed.get_ref<const std::string&>());
  }

 private:
  void begin(int open) {
    count();
    m_names.emplace_back();
    requireBoundedDepth(open);
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
  std::vector<std::set<std::string>> m_names;  // of the members of each open object
};

}  // namespace

Json readRequest(std::string_view text) {
  if (hasNul(text)) throw Error("the request holds a NUL byte");
  RequestBounds bounds;
  const auto check = [&](int open, Json::parse_event_t event, const Json& parsed) {
    bounds.check(open, event, parsed);
    return true;
  };
  Json request = Json::parse(text, check, false);
  if (!request.is_object()) throw Error("the request is not a JSON object");
  return request;
}

Json readJson(std::string_view text) try {
  if (hasNul(text)) return Json(Json::value_t::discarded);
  const auto check = [](int open, Json::parse_event_t event, const Json&) {
    if (begins(event)) requireBoundedDepth(open);
    return true;
  };
  return Json::parse(text, check, false);
} catch (const Error&) {
  return Json(Json::value_t::discarded);
}

}  // namespace host
