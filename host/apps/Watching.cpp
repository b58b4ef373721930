#include "apps/Watching.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "apps/TimeLimit.h"
#include "remote/RemoteClient.h"
#include "verbs/MethodJson.h"
#include "verbs/TimeText.h"

namespace host {
namespace {

Json eventJson(const ReceivedEvent& received) {
  const Method& event = received.method;
  Json json = {{"event", event.getName()}, {"parameters", parametersJson(event)}};
  if (received.time) json.update(eventTimeJson(received.time->utc, received.time->offset));
  return json;
}

bool matches(const Json& event, const Json& request) {
  const Json& names = request.at("events");
  if (!names.empty() && std::find(names.begin(), names.end(), event["event"]) == names.end()) {
    return false;
  }
  const auto wanted = request.at("where").items();
  return std::all_of(wanted.begin(), wanted.end(), [&](const auto& each) {
    return event["parameters"].value(each.key(), Json()) == each.value();
  });
}

}  // namespace

bool observeEvents(RemoteClient& client, std::chrono::milliseconds limit) {
  Method observe("observeTimeEvents", Method::call);
  const auto reply = client.call(observe, limit);
  if (!reply) return false;
  bool observing = false;
  if (reply->getBoolParameter("observeTimeEventsReturn", observing, Parameter::out) && observing) {
    return true;
  }
  throw Error("the service refused the observer");
}

void watchEvents(const Json& request, RemoteClient& client,
                 const std::function<bool(const Json& event)>& print) {
  const int count = request.at("count");
  const std::chrono::milliseconds wanted(request.at("for").get<std::int64_t>());
  const TimeLimit limit(wanted.count() > 0 ? std::optional(wanted) : std::nullopt);
  int seen = 0;
  while ((count == 0 || seen < count) && !limit.over()) {
    const auto received = client.nextReceivedEvent(limit.left());
    if (!received) continue;
    const Json event = eventJson(*received);
    if (!matches(event, request)) continue;
    ++seen;
    if (!print(event)) return;
  }
  if (seen >= count) return;
  throw Error(std::to_string(seen) + " of " + std::to_string(count) + " events came within " +
              secondsText(wanted));
}

}  // namespace host
