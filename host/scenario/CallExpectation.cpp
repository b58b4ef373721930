#include "scenario/CallExpectation.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "scenario/EventExpectation.h"
#include "scenario/Scenario.h"
#include "scenario/ScenarioDevice.h"
#include "verbs/CallWords.h"
#include "verbs/KnownCall.h"
#include "verbs/MethodCatalogue.h"
#include "verbs/WordReader.h"

namespace host {
namespace {

using Type = MethodParameter::Type;

[[noreturn]] void failCall(const std::string& expected, const std::string& got) {
  throw ScenarioFailure("expected " + expected + ", got " + got);
}

std::string nameIn(const std::string& word) {
  return word.substr(0, word.find_first_of(":="));
}

KnownCall readCall(WordReader& words) {
  const std::string& name = words.next("METHOD");
  return knownCall(name, words.rest());
}

// The words of a step that does not look at the reply.
KnownCall readRequest(WordReader& words) {
  KnownCall call = readCall(words);
  requireRequestOnly(call, "write `expect call` to check it");
  return call;
}

void requireReplies(const MethodRow& method) {
  if (method.replies()) return;
  WordReader::fail(std::string(method.name) + " never replies; write `call`, and check its effect");
}

// The service replies without parameters to a request that it does not understand.
bool isRefusal(const std::optional<Method>& reply) {
  return !reply || reply->getParameters().empty();
}

Method replyOf(const KnownCall& call, ScenarioDevice& device) {
  Method copy = call.request;
  if (!call.method->replies()) {
    static_cast<void>(device.call(copy));
    return {copy.getName().c_str(), Method::reply};
  }
  const auto reply = device.call(copy);
  if (isRefusal(reply)) failCall("a reply of " + copy.getName(), "none");
  return *reply;
}

bool isFalse(const Parameter& parameter) {
  return parameter.getType() == Parameter::boolean && !parameter.getBool();
}

bool isNamed(const std::vector<std::string>& words, const std::string& name) {
  return std::any_of(words.begin(), words.end(),
                     [&](const std::string& word) { return nameIn(word) == name; });
}

// A reply that reports a failure must not pass unnoticed.
void requireNoFalse(const Method& reply, const std::vector<std::string>& wanted) {
  for (const Parameter& parameter : reply.getParameters()) {
    if (isFalse(parameter) && !isNamed(wanted, parameter.getName())) {
      failCall("success", parametersText(reply) + "; write `expect false call` if that is right");
    }
  }
}

void requireReturnsBool(const MethodRow& method) {
  for (const MethodParameter& parameter : method.reply) {
    if (parameter.type == Type::boolean) return;
  }
  WordReader::fail(std::string(method.name) + " reports neither true nor false; write " +
                   "`expect call` or `expect refused call`");
}

}  // namespace

std::function<void(ScenarioDevice&)> callStep(WordReader& words) {
  const KnownCall call = readRequest(words);
  requireComplete(call);
  return [call](ScenarioDevice& device) { requireNoFalse(replyOf(call, device), {}); };
}

std::function<void(ScenarioDevice&)> expectCall(WordReader& words) {
  const KnownCall call = readCall(words);
  requireReplies(*call.method);
  requireComplete(call);
  return [call](ScenarioDevice& device) {
    const Method reply = replyOf(call, device);
    requireParameters("a reply with ", call.ofReply, reply);
    requireNoFalse(reply, call.ofReply);
  };
}

std::function<void(ScenarioDevice&)> expectFalseCall(WordReader& words) {
  const KnownCall call = readCall(words);
  requireReturnsBool(*call.method);
  return [call](ScenarioDevice& device) {
    const Method reply = replyOf(call, device);
    requireParameters("a reply with ", call.ofReply, reply);
    const auto& parameters = reply.getParameters();
    if (std::none_of(parameters.begin(), parameters.end(), isFalse)) {
      failCall("a reply of false", parametersText(reply));
    }
  };
}

std::function<void(ScenarioDevice&)> expectNoReply(WordReader& words) {
  const KnownCall call = readRequest(words);
  requireReplies(*call.method);
  return [call](ScenarioDevice& device) {
    Method copy = call.request;
    const auto reply = device.call(copy);
    if (isRefusal(reply)) return;
    const auto& parameters = reply->getParameters();
    const bool reportsFalse = std::any_of(parameters.begin(), parameters.end(), isFalse);
    failCall("no reply",
             parametersText(*reply) + (reportsFalse ? "; write `expect false call`" : ""));
  };
}

}  // namespace host
