#include "telephone/HostRequests.h"

#include <sys/socket.h>

#include <nlohmann/json.hpp>
#include <vector>

#include "base/Error.h"
#include "remote/RemoteClient.h"
#include "verbs/CallWords.h"
#include "verbs/CatalogueAnswers.h"
#include "verbs/CheckedRequest.h"
#include "verbs/KeyCatalogue.h"
#include "verbs/MethodCatalogue.h"
#include "verbs/MethodJson.h"
#include "verbs/NamedRows.h"
#include "verbs/ReadJson.h"
#include "verbs/UsageError.h"
#include "verbs/Verb.h"

namespace panel {
namespace {

using host::Error;
using host::Json;
using host::RemoteClient;
using host::UsageError;
using std::chrono::milliseconds;

constexpr milliseconds kMoveLimit = std::chrono::seconds(60);  // advancing a year takes a while

Json call(RemoteClient& client, const Json& request) {
  const std::string name = request["method"];
  Method method = host::callOf(name, request["arguments"].get<std::vector<std::string>>());
  const host::MethodRow* const row = host::rowNamed(host::remoteMethods(), name);
  if (row != nullptr && !row->replies()) {
    client.post(method);
    if (!client.barrier(kAnswerLimit)) throw Error("no reply; the host is busy");
    return {{"ok", true}, {"method", name}, {"reply", nullptr}};
  }
  const auto reply = client.call(method, kAnswerLimit);
  if (!reply) throw Error("no reply to " + name);
  return {{"ok", true}, {"method", name}, {"reply", host::parametersJson(*reply)}};
}

Json control(RemoteClient& client, const host::Verb& verb, Json request) {
  if (request.value("watch", false) || request.value("follow", false)) {
    throw UsageError(std::string(verb.name) +
                     " does not end by itself; the page follows it anyway");
  }
  if (request.contains("plot")) request["plot"] = true;  // the page draws it
  const auto text =
      client.control(request.dump(), host::takesTime(verb, request) ? kMoveLimit : kAnswerLimit);
  if (!text) throw Error("no reply; the host is busy, or the clock is still moving");
  Json answer = objectIn(*text);
  if (!answer.value("ok", false)) throw Error(answer.value("error", std::string("refused")));
  return answer;
}

}  // namespace

Json objectIn(const std::string& text) {
  Json answer = host::readJson(text);
  if (!answer.is_object()) throw Error("the host's answer is not a JSON object");
  return answer;
}

Json answerOf(const HostSockets& sockets, std::span<const std::string> words,
              const std::stop_token& ending) {
  const host::Verb& verb = host::verbOf(words);
  const Json request = host::checkedRequest(host::requestOf(verb, words));
  const bool calls = verb.route == host::Verb::Route::call;
  if (!calls && verb.route != host::Verb::Route::control) {
    throw UsageError(std::string(verb.name) + " is for clockctl");
  }
  RemoteClient client(calls ? sockets.call : sockets.control);
  const std::stop_callback hangUp(ending, [&] { ::shutdown(client.descriptor(), SHUT_RDWR); });
  return calls ? call(client, request) : control(client, verb, request);
}

Json catalogue() {
  Json keys = Json::array();
  for (const host::ManagementKey& row : host::managementKeys()) {
    Json& key = keys.emplace_back(host::catalogueJson(row));
    key["key"] = row.name;
    key["settable"] = row.settable;
  }
  return {{"keys", keys}};
}

}  // namespace panel
