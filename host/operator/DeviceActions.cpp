#include <nlohmann/json.hpp>

#include "base/Error.h"
#include "base/LogLevels.h"
#include "base/PrintableText.h"
#include "clock/VirtualClock.h"
#include "framework/ApplicationLog.h"
#include "framework/FailedLookups.h"
#include "operator/AuditRecord.h"
#include "operator/Controller.h"
#include "operator/HostActions.h"
#include "operator/LogFollowers.h"
#include "remote/ControlChannel.h"
#include "runtime/Device.h"
#include "services/LocalManagement.h"
#include "services/ManagementThread.h"
#include "services/PhysicalInterface.h"

namespace host {
namespace {

// Sets the key to the request's value on the management thread, and answers after the observers
// were notified there.
void changeValue(Controller& controller, const std::string& key, const Json& request,
                 const Channel& channel) {
  LocalManagement& management = controller.device().management();
  ManagementThread& thread = controller.device().managementThread();
  thread.post([&management, &thread, key, value = textMember(request, "value"), channel] {
    if (!channel->wanted()) return;
    VirtualClock::forgetActs();
    management.setValue(key, value);
    thread.post([channel] { answerDone(channel); });
  });
}

template <typename Injection>
void record(Controller& controller, const Json& request, Injection inject) {
  AuditRecord act(controller.device().securityLog(), SecurityLog::Event::injection,
                  "Inject " + textMember(request, "what") +
                      memberWords(request, {"plug", "status", "key", "value"}));
  inject();
  act.done();
}

int logLevel(const Json& request) {
  return static_cast<int>(numberMember(request, "level", 0, kLogTrace));
}

}  // namespace

void actOnInjectJack(Controller& controller, const Json& request, const Channel& channel) {
  record(controller, request, [&] {
    const auto plug = static_cast<int>(numberMember(request, "plug", INT32_MIN, INT32_MAX));
    const auto status = static_cast<int>(numberMember(request, "status", INT32_MIN, INT32_MAX));
    controller.device().physical().jack(plug, status);
    answerDone(channel);
  });
}

void actOnInjectNetwork(Controller& controller, const Json& request, const Channel& channel) {
  failedLookups().allowAll();  // another network may know them
  record(controller, request,
         [&] { changeValue(controller, "interface-status", request, channel); });
}

void actOnInjectDhcp(Controller& controller, const Json& request, const Channel& channel) {
  record(controller, request, [&] { changeValue(controller, "dhcp-enabled", request, channel); });
}

void actOnInjectMobility(Controller& controller, const Json& request, const Channel& channel) {
  record(controller, request,
         [&] { changeValue(controller, "mobility-user-data-update", request, channel); });
}

// Sets whether a key counts as the user's own.
void actOnInjectUserData(Controller& controller, const Json& request, const Channel& channel) {
  record(controller, request, [&] {
    const std::string value = textMember(request, "value");
    if (value != "on" && value != "off") throw Error(quotedText(value) + " is not on or off");
    controller.device().management().setUserData(textMember(request, "key"), value == "on");
    answerDone(channel);
  });
}

void actOnInjectValue(Controller& controller, const Json& request, const Channel& channel) {
  record(controller, request,
         [&] { changeValue(controller, textMember(request, "key"), request, channel); });
}

void actOnLog(Controller& controller, const Json& request, const Channel& channel) {
  if (request.contains("call")) {
    const auto call = numberMember(request, "call", 1, UINT32_MAX);
    const std::vector<Json> rows = logOfCall(channel->origin(), static_cast<std::uint32_t>(call));
    return answer(channel, {{"ok", true}, {"entries", newestThatFit(rows)}});
  }
  const int level = request.contains("level") ? logLevel(request) : kLogTrace;
  if (request.value("follow", Json(false)) != Json(true)) {
    return answer(channel, {{"ok", true}, {"entries", newestThatFit(keptLog(level))}});
  }
  controller.logFollowers()->add(channel, level);
  channel->onGone([weak = std::weak_ptr(controller.logFollowers()), client = channel.get()] {
    if (const auto followers = weak.lock()) followers->remove(client);
  });
}

void actOnLogLevel(Controller&, const Json& request, const Channel& channel) {
  ApplicationLog& log = ApplicationLog::instance();
  const int before = log.level();
  if (!request.contains("level")) return answer(channel, {{"ok", true}, {"level", before}});
  log.setLevel(logLevel(request));
  answer(channel, {{"ok", true}, {"level", log.level()}, {"before", before}});
}

}  // namespace host
