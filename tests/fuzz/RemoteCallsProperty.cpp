// Calls of peers, a line each, in JSON: whatever they hold, the real service answers each known one
// once and as the table of methods says, and the others not at all.

#include <algorithm>
#include <memory>
#include <sstream>
#include <vector>

#include "ClockServiceInvoker.h"
#include "ClockServiceObserverProxy.h"
#include "FrameworkContext.h"
#include "InvokerResponse.h"
#include "Method.h"
#include "ProxyRequest.h"
#include "fuzz/Property.h"
#include "plugin/Telephone.h"
#include "remote/JsonCodec.h"
#include "verbs/MethodCatalogue.h"

namespace {

using fuzz::hold;

constexpr std::size_t kMostCalls = 64;

bool isOf(const Parameter& parameter, const host::MethodParameter& row) {
  const Parameter::types types[] = {Parameter::integer, Parameter::text, Parameter::boolean};
  return parameter.getName() == row.name && parameter.getDirection() == Parameter::out &&
         parameter.getType() == types[static_cast<std::size_t>(row.type)];
}

// All of the row's parameters in their order, or none: a request may lack what it takes.
void holdReply(const Method& reply, const host::RemoteMethod& row) {
  const auto& came = reply.getParameters();
  hold(reply.getName() == row.name && reply.getType() == Method::reply, "a reply is named",
       row.name);
  hold(came.empty() || came.size() == row.reply.size() ||
           (came.size() == 1 && came.front().getType() == Parameter::boolean),
       "a reply has its parameters", row.name);
  for (std::size_t i = 0; i < came.size(); ++i)
    hold(isOf(came[i], row.reply[i]), "a reply's parameters are as told", row.name);
}

// A peer that calls and observes.
class Peer final : public FrameworkContext, public ProxyRequest {
 public:
  explicit Peer(plugin::Telephone& telephone)
      : m_telephone(telephone), m_proxy(createClockServiceObserverProxy()) {
    m_proxy->initProxy(*this);
    m_invoker.initInvoker(this);
  }
  virtual ~Peer() = default;

  void call(const std::string& bytes) {
    m_replies.clear();
    m_invoker.handleMessage(&m_telephone.service(), bytes.data(), static_cast<int>(bytes.size()),
                            new Response(*this));
    hold(m_responses == 0, "a response is deleted", bytes);
    holdAnswer(bytes);
  }

  MessageCodec* getCodec(const std::string&) override { return &m_codec; }
  Proxy* createProxy(const std::string&, const std::string&) override { return m_proxy.get(); }
  bool sendMethod(Method& method) override {
    const auto* const event = host::findRemoteEvent(method.getName());
    hold(event != nullptr && method.getParameters().size() == event->request.size(),
         "an event is one of the known ones", method.getName());
    return true;
  }

 private:
  class Response final : public InvokerResponse {
   public:
    explicit Response(Peer& peer) : m_peer(peer) { ++m_peer.m_responses; }
    ~Response() override { --m_peer.m_responses; }
    const char* getCodecName() override { return "json"; }
    const char* getReplyAddress() override { return "peer"; }
    void sendReply(const char* data, int length) override {
      m_peer.m_replies.emplace_back(data, static_cast<std::size_t>(length));
    }

   private:
    Peer& m_peer;
  };

  bool decode(const std::string& bytes, Method& method) {
    std::stringstream stream(bytes);
    return m_codec.decode(stream, method);
  }

  void holdAnswer(const std::string& bytes) {
    Method request;
    const host::RemoteMethod* const row =
        decode(bytes, request) ? host::findRemoteMethod(request.getName()) : nullptr;
    const bool replies = row != nullptr && row->replies;
    hold(m_replies.size() == (replies ? 1U : 0U), "a known method is answered once", bytes);
    if (!replies) return;
    Method reply;
    hold(decode(m_replies.front(), reply), "a reply can be read", m_replies.front());
    holdReply(reply, *row);
  }

  plugin::Telephone& m_telephone;
  host::JsonCodec m_codec;
  std::unique_ptr<Proxy> m_proxy;
  ClockServiceInvoker m_invoker;
  std::vector<std::string> m_replies;
  int m_responses = 0;
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
