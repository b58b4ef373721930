#include "apps/Explanation.h"

#include <nlohmann/json.hpp>

#include "apps/Session.h"
#include "remote/PeerProcess.h"
#include "remote/RemoteClient.h"
#include "verbs/ReadJson.h"
#include "verbs/TimeText.h"
#include "verbs/VerbWords.h"

namespace host {
namespace {

constexpr const char* kService = "ClockService";
constexpr std::chrono::minutes kReadLater{1};    // a clock that runs has gone on by less
constexpr const char* kTimeSet = "UTC set to ";  // what the service says after setTimeInt

// An object, which is empty without a positive answer.
Json answerTo(RemoteClient& control, const Json& request, std::chrono::milliseconds limit) {
  const auto text = control.control(request.dump(), limit);
  if (!text) return Json::object();
  Json answer = readJson(*text);
  return answer.is_object() && answer.value("ok", Json(false)) == Json(true) ? answer
                                                                             : Json::object();
}

bool isSameValue(const std::string& key, const std::string& now, const std::string& meant) {
  const auto instant = parseInstant(now);
  const auto set = parseInstant(meant);
  if (key != kTimeKey || !instant || !set) return now == meant;
  return *instant >= *set && *instant - *set < kReadLater;
}

}  // namespace

std::string whyStopped(const RemoteClient& client) {
  const auto process = stoppedProcessAt(client.descriptor());
  if (!process) return "";
  return "the host is stopped; `kill -CONT " + std::to_string(*process) + "` resumes it";
}

std::optional<std::string> otherValue(RemoteClient& control, const Json& request,
                                      const Json& answer, std::chrono::milliseconds limit) {
  const std::string key = request.at("key");
  const Json now = answerTo(control, {{"verb", "get"}, {"key", key}}, limit).value("value", Json());
  const std::string meant = answer.value("instant", request.value("value", std::string()));
  if (!now.is_string() || isSameValue(key, now, meant)) return std::nullopt;
  return now.get<std::string>();
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
