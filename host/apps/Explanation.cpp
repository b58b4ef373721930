#include "apps/Explanation.h"

#include <nlohmann/json.hpp>

#include "apps/Session.h"
#include "remote/RemoteClient.h"
#include "verbs/Json.h"
#include "verbs/ReadJson.h"

namespace host {
namespace {

constexpr const char* kService = "ClockService";
constexpr const char* kTimeSet = "UTC set to ";  // what the service says after setTimeInt

// An object, which is empty without a positive answer.
Json answerTo(RemoteClient& control, const Json& request, std::chrono::milliseconds limit) {
  const auto text = control.control(request.dump(), limit);
  if (!text) return Json::object();
  Json answer = readJson(*text);
  return answer.is_object() && answer.value("ok", Json(false)) == Json(true) ? answer
                                                                             : Json::object();
}

}  // namespace

std::optional<std::string> valueNow(RemoteClient& control, const std::string& key,
                                    std::chrono::milliseconds limit) {
  const Json answer = answerTo(control, {{"verb", "get"}, {"key", key}}, limit);
  const auto value = answer.find("value");
  if (value == answer.end() || !value->is_string()) return std::nullopt;
  return value->get<std::string>();
}

std::string lastLineOf(Session& session, std::uint32_t call, std::chrono::milliseconds limit) try {
  const Json answer =
      answerTo(session.client(Verb::Route::control), {{"verb", "log"}, {"call", call}}, limit);
  std::string line;
  for (const Json& entry : answer.value("entries", Json::array())) {
    if (entry.value("component", "") == kService) line = entry.value("text", "");
  }
  return line;
} catch (const Error&) {
  return "";
}

bool saysRefused(const std::string& line) {
  return !line.empty() && !line.starts_with(kTimeSet);
}

}  // namespace host
