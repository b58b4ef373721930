#include <nlohmann/json.hpp>

#include "base/Error.h"
#include "base/PrintableText.h"
#include "framework/FailedLookups.h"
#include "operator/ChildProcesses.h"
#include "operator/Controller.h"
#include "operator/HostActions.h"
#include "operator/LogRing.h"
#include "operator/RecordedAct.h"
#include "remote/ControlChannel.h"
#include "runtime/Device.h"
#include "services/LocalManagement.h"
#include "services/ManagementThread.h"
#include "services/PhysicalInterface.h"
#include "verbs/NamedRows.h"
#include "verbs/VerbTable.h"

namespace host {
namespace {

constexpr const char* kNtpClient = "ntpclient";

// Changes the value on the management thread, and answers after the observers were notified there.
void changeValue(Controller& controller, const std::string& key, const std::string& value,
                 const Channel& channel) {
  LocalManagement& management = controller.device().management();
  ManagementThread& thread = controller.device().managementThread();
  thread.post([&management, &thread, key, value, channel] {
    if (!channel->wanted()) return;
    management.setValue(key, value);
    thread.post([channel] { answerDone(channel); });
  });
}

void injectJack(Controller& controller, const Json& request, const Channel& channel) {
  const auto plug = static_cast<int>(numberMember(request, "plug", INT32_MIN, INT32_MAX));
  const auto status = static_cast<int>(numberMember(request, "status", INT32_MIN, INT32_MAX));
  controller.device().physical().jack(plug, status);
  answerDone(channel);
}

void injectNetwork(Controller& controller, const Json& request, const Channel& channel) {
  failedLookups().allowAll();  // another network may know them
  changeValue(controller, "interface-status", textMember(request, "value"), channel);
}

void injectDhcp(Controller& controller, const Json& request, const Channel& channel) {
  changeValue(controller, "dhcp-enabled", textMember(request, "value"), channel);
}

void injectMobility(Controller& controller, const Json& request, const Channel& channel) {
  changeValue(controller, "mobility-user-data-update", textMember(request, "value"), channel);
}

// Sets whether a key counts as the user's own.
void injectUserData(Controller& controller, const Json& request, const Channel& channel) {
  const std::string value = textMember(request, "value");
  if (value != "on" && value != "off") throw Error(quotedText(value) + " is not on or off");
  controller.device().management().setUserData(textMember(request, "key"), value == "on");
  answerDone(channel);
}

void injectValue(Controller& controller, const Json& request, const Channel& channel) {
  changeValue(controller, textMember(request, "key"), textMember(request, "value"), channel);
}

constexpr HostAction kInjectHandlers[] = {
    {"jack", injectJack},         {"network", injectNetwork},    {"dhcp", injectDhcp},
    {"mobility", injectMobility}, {"user-data", injectUserData}, {"value", injectValue},
};
static_assert(sameNames(kInjectHandlers, kInjectActions), "a row for each action of VerbTable.h");

std::string ntpClientState() {
  const auto id = childRunning(kNtpClient);
  return id ? "running, process " + std::to_string(*id) : "not running";
}

}  // namespace

void actOnInject(Controller& controller, const Json& request, const Channel& channel) {
  const std::string what = textMember(request, "what");
  const HostAction* const action = rowNamed(kInjectHandlers, what);
  if (action == nullptr) throw Error(quotedText(what) + " cannot be injected");
  RecordedAct record(controller.device().securityLog(), SecurityLog::Event::injection,
                     "Inject " + what + memberWords(request, {"plug", "status", "key", "value"}));
  action->carryOut(controller, request, channel);
  record.done();
}

void actOnStatus(Controller& controller, const Json&, const Channel& channel) {
  Device& device = controller.device();
  const HostFacts& facts = controller.facts();
  Json reply = {{"ok", true}, {"clock", clockState(controller)}};
  if (!facts.plugin.empty()) reply["plugin"] = facts.plugin;
  reply["variant"] = device.options().variant;
  reply["network"] = device.management().value("interface-status").value_or("unknown");
  reply["ntpClient"] = ntpClientState();
  if (facts.clients) reply["clients"] = facts.clients();
  if (!facts.socket.empty()) reply["socket"] = facts.socket;
  reply["state"] = device.options().state.string();
  reply["version"] = facts.version;
  answer(channel, reply);
}

void actOnLog(Controller& controller, const Json& request, const Channel& channel) {
  const std::shared_ptr<LogRing>& log = controller.log();
  if (request.value("follow", Json(false)) != Json(true)) {
    return answer(channel, {{"ok", true}, {"entries", newestThatFit(log->entries())}});
  }
  log->follow(channel);
  channel->onGone([weak = std::weak_ptr(log), client = channel.get()] {
    if (const auto ring = weak.lock()) ring->unfollow(client);
  });
}

}  // namespace host
