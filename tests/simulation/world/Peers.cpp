#include "simulation/world/Peers.h"

#include <sstream>

#include "ClockServiceInvoker.h"
#include "ClockServiceObserverProxy.h"
#include "InvokerResponse.h"

namespace simulation {

class Peers::Response : public InvokerResponse {
 public:
  Response(Peers& peers, std::string caller, std::string codec)
      : m_peers(peers), m_caller(std::move(caller)), m_codecName(std::move(codec)) {
    ++m_peers.m_openResponses;
  }
  ~Response() override { --m_peers.m_openResponses; }

  const char* getCodecName() override { return m_codecName.c_str(); }
  const char* getReplyAddress() override { return m_caller.c_str(); }
  void sendReply(const char* data, int length) override {
    std::stringstream stream(std::string(data, static_cast<std::size_t>(length)));
    Method reply;
    const bool whole = m_peers.m_codec.decode(stream, reply);
    m_peers.m_journal.add(m_caller + " is answered " + (whole ? describe(reply) : "nonsense"));
  }

 private:
  Peers& m_peers;
  const std::string m_caller;
  const std::string m_codecName;
};

class Peers::Request : public ProxyRequest {
 public:
  Request(Journal& journal, std::string name) : m_journal(journal), m_name(std::move(name)) {}
  virtual ~Request() = default;
  bool sendMethod(Method& method) override {
    m_journal.add(m_name + " gets " + describe(method));
    return true;
  }

 private:
  Journal& m_journal;
  const std::string m_name;
};

struct Peers::Peer {
  Peer(Journal& journal, const std::string& name)
      : request(journal, name), proxy(createClockServiceObserverProxy()) {
    proxy->initProxy(request);
  }
  Request request;
  std::unique_ptr<Proxy> proxy;
};

Peers::Peers(Journal& journal) : m_journal(journal), m_invoker(createClockServiceInvoker()) {
  m_invoker->initInvoker(this);
}

Peers::~Peers() = default;

MessageCodec* Peers::getCodec(const std::string& name) {
  return name == "plain" ? &m_codec : nullptr;
}

Proxy* Peers::createProxy(const std::string& interfaceName, const std::string& address) {
  m_journal.add("proxy " + interfaceName + " for " + address);
  if (address.rfind("peer", 0) != 0) return nullptr;
  auto& peer = m_peers[address];
  if (!peer) peer = std::make_unique<Peer>(m_journal, address);
  return peer->proxy.get();
}

void Peers::call(Executable* service, const std::string& bytes, const std::string& caller,
                 const std::string& codec) {
  m_invoker->handleMessage(service, bytes.data(), static_cast<int>(bytes.size()),
                           new Response(*this, caller, codec));
  if (m_openResponses != 0) m_journal.add("a response is left over");
}

}  // namespace simulation
