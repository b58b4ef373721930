#include "simulation/Peers.h"

#include <iostream>
#include <iterator>

#include "ClockServiceInvoker.h"
#include "ClockServiceObserverProxy.h"
#include "InvokerResponse.h"
#include "ProxyRequest.h"

namespace simulation {
namespace {

std::string valueOf(const Parameter& parameter) {
  if (parameter.getType() == Parameter::integer) return std::to_string(parameter.getInt());
  if (parameter.getType() == Parameter::text) return '"' + parameter.getString() + '"';
  return parameter.getBool() ? "true" : "false";
}

// Type, name, and each parameter with its direction.
std::string describe(const Method& method) {
  std::string text = std::to_string(method.getType()) + " " + method.getName();
  for (const Parameter& parameter : method.getParameters()) {
    text += " " + parameter.getName() + "/" + std::to_string(parameter.getDirection()) + "=" +
            valueOf(parameter);
  }
  return text;
}

}  // namespace

class Peers::Response : public InvokerResponse {
 public:
  Response(Peers& peers, std::string caller, std::string codec)
      : m_peers(peers), m_caller(std::move(caller)), m_codec(std::move(codec)) {
    ++m_peers.m_openResponses;
  }
  ~Response() override { --m_peers.m_openResponses; }

  const char* getCodecName() override { return m_codec.c_str(); }
  const char* getReplyAddress() override { return m_caller.c_str(); }
  void sendReply(const char* data, int length) override {
    m_peers.m_reply = {data, static_cast<std::size_t>(length)};
  }

 private:
  Peers& m_peers;
  const std::string m_caller;
  const std::string m_codec;
};

struct Peers::Peer final : ProxyRequest {
  Peer(plugin::Journal& theJournal, std::string theName)
      : journal(theJournal), name(std::move(theName)), proxy(createClockServiceObserverProxy()) {
    proxy->initProxy(*this);
  }
  bool sendMethod(Method& event) override {
    journal.add(name + " gets " + describe(event));
    return true;
  }
  plugin::Journal& journal;
  const std::string name;
  std::unique_ptr<Proxy> proxy;
};

Peers::Peers(plugin::Journal& journal)
    : m_journal(journal), m_invoker(createClockServiceInvoker()) {
  m_invoker->initInvoker(this);
}

Peers::~Peers() = default;

std::string Peers::call(Executable* service, const Method& request, const std::string& caller,
                        const std::string& codec) {
  m_request = request;
  m_reply = "no reply";
  const std::string& bytes = request.getName();
  m_invoker->handleMessage(service, bytes.data(), static_cast<int>(bytes.size()),
                           new Response(*this, caller, codec));
  if (m_openResponses != 0) m_journal.add("a response was not deleted");
  return m_reply;
}

MessageCodec* Peers::getCodec(const std::string& name) {
  return name == "plain" ? this : nullptr;
}

Proxy* Peers::createProxy(const std::string& interfaceName, const std::string& address) {
  m_journal.add("proxy " + interfaceName + " for " + address);
  if (address.rfind("peer", 0) != 0) return nullptr;
  auto& peer = m_peers[address];
  if (!peer) peer = std::make_unique<Peer>(m_journal, address);
  return peer->proxy.get();
}

void Peers::encode(Method& method, std::iostream& stream) {
  stream << describe(method);
}

bool Peers::decode(std::iostream& stream, Method& method) {
  const std::string bytes(std::istreambuf_iterator<char>(stream), {});
  method = m_request;
  return bytes == m_request.getName() && bytes != "garbage";
}

}  // namespace simulation
