#include <nlohmann/json.hpp>
#include <utility>

#include "base/Origin.h"
#include "base/PrintableText.h"
#include "clock/VirtualClock.h"
#include "framework/DataAccess.h"
#include "operator/Controller.h"
#include "operator/HostActions.h"
#include "remote/ControlChannel.h"
#include "runtime/Device.h"
#include "services/LocalManagement.h"
#include "services/ManagementThread.h"
#include "verbs/CatalogueAnswers.h"
#include "verbs/DidYouMean.h"
#include "verbs/KeyCatalogue.h"
#include "verbs/NamedRows.h"
#include "verbs/TimeText.h"
#include "verbs/VerbWords.h"

namespace host {
namespace {

// Bytes of a value in the list of all keys; `get` shows the whole value.
constexpr std::size_t kLongestShown = 1024;

constexpr const char* kNoClock = "no clock answers";
constexpr const char* kSeeLog = "see `clockctl log`";

std::string unknownKey(const std::string& key) {
  return "no key " + quotedText(key) +
         suggestion(key, namesOf(managementKeys()), "; `clockctl keys` lists them");
}

std::string whyUnread(const LocalManagement& management, const std::string& key) {
  if (rowNamed(managementKeys(), key) == nullptr) return unknownKey(key);
  return quotedText(key) + " cannot be read; " + (management.hasClock() ? kSeeLog : kNoClock);
}

std::string whyRefused(const LocalManagement& management, const std::string& key,
                       const std::string& value, bool storeFailed) {
  const ManagementKey* const row = rowNamed(managementKeys(), key);
  if (row == nullptr) return unknownKey(key);
  if (!management.hasClock()) return quotedText(key) + " cannot be set; " + kNoClock;
  if (storeFailed) return quotedText(key) + " could not be stored; " + kSeeLog;
  if (!row->settable) return quotedText(key) + " cannot be set";
  return quotedText(key) + " refused " + quotedText(value) + "; it takes " +
         std::string(row->values);
}

bool isLocalTime(const Json& request) {
  return request.contains("local") && textMember(request, "key") == kTimeKey;
}

std::string valueToSet(Device& device, const Json& request) {
  if (!isLocalTime(request)) return textMember(request, "value");
  return longInstantText(instantOfLocalTime(device, textMember(request, "local")));
}

// Runs the body on the management thread with the client's origin, unless the client is gone by
// then. The device's management outlives that thread's tasks.
template <typename Body>
void onManagementThread(Controller& controller, const Channel& channel, Body body) {
  LocalManagement& management = controller.device().management();
  controller.device().managementThread().post([&management, channel, body = std::move(body)] {
    const OriginScope origin(channel->origin());
    VirtualClock::forgetActs();
    if (channel->wanted()) body(management, channel);
  });
}

Json keyRow(LocalManagement& management, const ManagementKey& row) {
  const std::string key(row.name);
  std::string value;
  const bool known = management.get(key, value);
  Json json = {{"key", key}};
  json["value"] = known ? Json(clippedText(value, kLongestShown)) : Json(nullptr);
  json["settable"] = row.settable;
  json["state"] = management.itemState(key);
  return json;
}

void actOnKey(Controller& controller, const Json& request, const Channel& channel) {
  auto describe = [key = textMember(request, "key")](LocalManagement& management,
                                                     const Channel& client) {
    const ManagementKey* const row = rowNamed(managementKeys(), key);
    if (row == nullptr) return answerRefusal(client, unknownKey(key));
    Json reply = {{"ok", true}};
    reply.update(keyRow(management, *row));
    reply.update(catalogueJson(*row));
    answer(client, reply);
  };
  onManagementThread(controller, channel, std::move(describe));
}

}  // namespace

void actOnGet(Controller& controller, const Json& request, const Channel& channel) {
  auto get = [key = textMember(request, "key")](LocalManagement& management,
                                                const Channel& client) {
    std::string value;
    if (!management.get(key, value)) return answerRefusal(client, whyUnread(management, key));
    answer(client, {{"ok", true}, {"key", key}, {"value", value}});
  };
  onManagementThread(controller, channel, std::move(get));
}

void actOnSet(Controller& controller, const Json& request, const Channel& channel) {
  auto set = [key = textMember(request, "key"), value = valueToSet(controller.device(), request),
              local = isLocalTime(request)](LocalManagement& management, const Channel& client) {
    const std::uint64_t failedBefore = failedWritesHere();
    if (management.set(key, value)) {
      return local ? answer(client, {{"ok", true}, {"instant", value}}) : answerDone(client);
    }
    const bool storeFailed = failedWritesHere() != failedBefore;
    answerRefusal(client, whyRefused(management, key, value, storeFailed));
  };
  onManagementThread(controller, channel, std::move(set));
}

void actOnReset(Controller& controller, const Json&, const Channel& channel) {
  onManagementThread(controller, channel, [](LocalManagement& management, const Channel& client) {
    if (management.reset()) return answerDone(client);
    answerRefusal(client,
                  "nothing was reset: date and time format are the device's defaults already, or "
                  "were not set by the user");
  });
}

void actOnKeys(Controller& controller, const Json& request, const Channel& channel) {
  if (request.contains("key")) return actOnKey(controller, request, channel);
  onManagementThread(controller, channel, [](LocalManagement& management, const Channel& client) {
    Json rows = Json::array();
    for (const ManagementKey& row : managementKeys()) rows.push_back(keyRow(management, row));
    answer(client, {{"ok", true}, {"keys", rows}});
  });
}

}  // namespace host
