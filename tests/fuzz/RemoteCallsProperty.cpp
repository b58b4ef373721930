// Calls of peers, a line each, in JSON: whatever they hold, the real service answers each known one
// once and as the table of methods says, and the others not at all.

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

bool isOf(const Parameter& parameter, const host::MethodParameter& row) {
  const Parameter::types types[] = {Parameter::integer, Parameter::text, Parameter::boolean};
  return parameter.getName() == row.name && parameter.getDirection() == Parameter::out &&
         parameter.getType() == types[static_cast<std::size_t>(row.type)];
}

// All of the row's parameters in their order, or none: a request may lack what it takes.
void holdReply(const Method& reply, const host::MethodRow& row) {
  const auto& came = reply.getParameters();
  hold(reply.getName() == row.name && reply.getType() == Method::reply, "a reply is named",
       row.name);
  hold(came.empty() || came.size() == row.reply.size() ||
           (came.size() == 1 && came.front().getType() == Parameter::boolean),
       "a reply has its parameters", row.name);
  for (std::size_t i = 0; i < came.size(); ++i)
    hold(isOf(came[i], row.reply.begin()[i]), "a reply's parameters are as told", row.name);
}

// A peer that calls and observes.
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
    hold(outcome.deleted, "a response is deleted", bytes);
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
    hold(replies.size() == (isReplied ? 1U : 0U), "a known method is answered once", bytes);
    if (!isReplied) return;
    Method reply;
    hold(decode(replies.front(), reply), "a reply can be read", replies.front());
    holdReply(reply, *row);
  }

  plugin::Telephone& m_telephone;
  host::JsonCodec m_codec;
  std::unique_ptr<Proxy> m_proxy;
  support::Framework m_framework;
  ClockServiceInvoker m_invoker;
};

}  // namespace

// After each call the time passes in which the service tells what it has to tell.
void fuzz::property(std::string_view input) {
  plugin::Telephone telephone;
  Peer peer(telephone);
  telephone.switchOn();
  Reader lines(input);
  for (std::size_t calls = 0; calls < kMostCalls && !lines.atEnd(); ++calls) {
    peer.call(grown(lines.line()));
    telephone.pass(std::chrono::milliseconds(1));
  }
  telephone.switchOff();
}
