#include "plugin/RemotePeer.h"

#include <iostream>
#include <iterator>

#include "ClockServiceInvoker.h"
#include "ClockServiceObserverProxy.h"
#include "InvokerResponse.h"
#include "Method.h"
#include "unit/MethodText.h"

namespace plugin {

class RemotePeer::Response final : public InvokerResponse {
 public:
  explicit Response(std::string& reply) : m_reply(reply) {}
  const char* getCodecName() override { return "text"; }
  const char* getReplyAddress() override { return "peer"; }
  void sendReply(const char* data, int length) override {
    m_reply.assign(data, static_cast<std::size_t>(length));
  }

 private:
  std::string& m_reply;
};

void RemotePeer::TextCodec::encode(Method& method, std::iostream& stream) {
  stream << unit::textOf(method);
}

bool RemotePeer::TextCodec::decode(std::iostream& stream, Method& method) {
  return unit::methodOf({std::istreambuf_iterator<char>(stream), {}}, method);
}

RemotePeer::RemotePeer(Executable& service)
    : m_service(service),
      m_invoker(createClockServiceInvoker()),
      m_proxy(createClockServiceObserverProxy()) {
  m_invoker->initInvoker(this);
  m_proxy->initProxy(*this);
}

RemotePeer::~RemotePeer() = default;

std::string RemotePeer::call(const std::string& message) {
  std::string reply;
  m_invoker->handleMessage(&m_service, message.data(), static_cast<int>(message.size()),
                           new Response(reply));
  return reply;
}

MessageCodec* RemotePeer::getCodec(const std::string& /*name*/) {
  return &m_codec;
}

Proxy* RemotePeer::createProxy(const std::string& /*interfaceName*/,
                               const std::string& /*address*/) {
  return m_proxy.get();
}

bool RemotePeer::sendMethod(Method& /*event*/) {
  ++events;
  return true;
}

}  // namespace plugin
