// Calls of peers in JSON, one per line. Whatever they contain, the real service sends one reply to
// each known method that has one, as the table of methods says, and none to any other call.

#include <algorithm>
#include <memory>
#include <sstream>
#include <vector>

#include "ClockServiceInvoker.h"
#include "ClockServiceObserverProxy.h"
#include "Method.h"
#include "ProxyRequest.h"
#include "fuzz/Property.h"
#include "plugin/Telephone.h"
#include "remote/JsonCodec.h"
#include "support/Framework.h"
#include "verbs/MethodCatalogue.h"
#include "verbs/NamedRows.h"

namespace {

using fuzz::hold;

constexpr std::size_t kMostCalls = 64;

bool matches(const Parameter& parameter, const host::MethodParameter& row) {
  const Parameter::types types[] = {Parameter::integer, Parameter::text, Parameter::boolean};
  return parameter.getName() == row.name && parameter.getDirection() == Parameter::out &&
         parameter.getType() == types[static_cast<std::size_t>(row.type)];
}

// All of the row's parameters in order. If the request lacks a parameter, none, or a single flag.
void holdReply(const Method& reply, const host::MethodRow& row) {
  const auto& parameters = reply.getParameters();
  hold(reply.getName() == row.name && reply.getType() == Method::reply,
       "a reply has its method's name", row.name);
  hold(parameters.empty() || parameters.size() == row.reply.size() ||
           (parameters.size() == 1 && parameters.front().getType() == Parameter::boolean),
       "a reply has as many parameters as documented", row.name);
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    hold(matches(parameters[i], row.reply.begin()[i]), "a reply's parameters are as documented",
         row.name);
  }
}

// A peer that calls the service and gets its events.
class Peer final : public ProxyRequest {
 public:
  explicit Peer(plugin::Telephone& telephone)
      : m_telephone(telephone), m_proxy(createClockServiceObserverProxy()) {
    m_proxy->initProxy(*this);
    m_framework.codecs["json"] = &m_codec;
    m_framework.proxy = m_proxy.get();
    m_invoker.initInvoker(&m_framework);
  }

  void call(const std::string& bytes) {
    const auto outcome = support::request(m_invoker, &m_telephone.service(), bytes, "json");
    hold(outcome.deleted, "the service deletes the response", bytes);
    holdAnswer(bytes, outcome.replies);
  }

  bool sendMethod(Method& method) override {
    const auto* const event = host::rowNamed(host::remoteEvents(), method.getName());
    hold(event != nullptr && method.getParameters().size() == event->request.size(),
         "an event is one of the known ones", method.getName());
    return true;
  }

 private:
  bool decode(const std::string& bytes, Method& method) {
    std::stringstream stream(bytes);
    return m_codec.decode(stream, method);
  }

  void holdAnswer(const std::string& bytes, const std::vector<std::string>& replies) {
    Method request;
    const host::MethodRow* const row =
        decode(bytes, request) ? host::rowNamed(host::remoteMethods(), request.getName()) : nullptr;
    const bool isReplied = row != nullptr && row->replies();
    hold(replies.size() == (isReplied ? 1U : 0U),
         "exactly one reply to a known method, none to others", bytes);
    if (!isReplied) return;
    Method reply;
    hold(decode(replies.front(), reply), "a reply can be decoded", replies.front());
    holdReply(reply, *row);
  }

  plugin::Telephone& m_telephone;
  host::JsonCodec m_codec;
  std::unique_ptr<Proxy> m_proxy;
  support::Framework m_framework;
  ClockServiceInvoker m_invoker;
};

}  // namespace

// Lets pending events be delivered after each call.
void fuzz::property(std::string_view input) {
  plugin::Telephone telephone;
  Peer peer(telephone);
  telephone.switchOn();
  Reader lines(input);
  for (std::size_t calls = 0; calls < kMostCalls && !lines.atEnd(); ++calls) {
    peer.call(expanded(lines.line()));
    telephone.pass(std::chrono::milliseconds(1));
  }
  telephone.switchOff();
}
