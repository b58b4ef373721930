#include "host/remote/FakeDevice.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

#include "InvokerResponse.h"
#include "MessageCodec.h"
#include "ProxyRequest.h"

namespace host {
namespace {

constexpr const char* kInterface = "ClockServiceObserverIfc";

}  // namespace

std::atomic<int> FakeProxy::living = 0;

bool FakeProxy::send(Method& method) {
  return m_request->sendMethod(method);
}

RemoteTarget FakeDevice::target() {
  return {m_service, *this, [] { return new FakeProxy; }};
}

void FakeDevice::handleMessage(Executable* executable, const char* message, int length,
                               InvokerResponse* handedOver) {
  const std::unique_ptr<InvokerResponse> response(handedOver);
  if (executable != &m_service) throw std::logic_error("another service");
  MessageCodec* const codec = m_context->getCodec(response->getCodecName());
  std::stringstream stream(std::string(message, static_cast<std::size_t>(length)));
  Method request;
  if (codec == nullptr || !codec->decode(stream, request)) return;
  if (request.getName() == "oneWay") ++m_oneWayCalls;
  if (request.getName() == "unobserveTimeEvents") ++m_unobserveCalls;
  const auto row = rows().find(request.getName());
  if (row == rows().end()) return;
  if (request.getName() == "unobserveTimeEvents" && !m_unobserving) return;
  Method reply(request.getName().c_str(), Method::reply);
  (this->*row->second)(request, reply, response->getReplyAddress());
  std::stringstream encoded;
  codec->encode(reply, encoded);
  const std::string bytes = encoded.str();
  response->sendReply(bytes.data(), static_cast<int>(bytes.size()));
  response->sendReply("twice", 5);
}

const std::map<std::string, FakeDevice::Row>& FakeDevice::rows() {
  static const std::map<std::string, Row> rows = {
      {"echo", &FakeDevice::echo},
      {"repeat", &FakeDevice::repeat},
      {"fail", &FakeDevice::fail},
      {"observeTimeEvents", &FakeDevice::observe},
      {"unobserveTimeEvents", &FakeDevice::unobserve},
  };
  return rows;
}

void FakeDevice::echo(Method& request, Method& reply, const std::string&) {
  int number = 0;
  if (!request.getIntParameter("number", number, Parameter::in)) return;
  reply.addIntParameter("number", number, Parameter::out);
}

void FakeDevice::repeat(Method& request, Method& reply, const std::string&) {
  int bytes = 0;
  if (!request.getIntParameter("bytes", bytes, Parameter::in)) return;
  reply.addStringParameter("text", std::string(static_cast<std::size_t>(bytes), 'r'),
                           Parameter::out);
}

void FakeDevice::fail(Method&, Method&, const std::string&) {
  throw std::runtime_error("on purpose");
}

void FakeDevice::observe(Method&, Method& reply, const std::string& address) {
  auto* const proxy = dynamic_cast<FakeProxy*>(m_context->createProxy(kInterface, address));
  if (proxy != nullptr) {
    const std::lock_guard lock(m_mutex);
    m_observers.push_back(proxy);
  }
  reply.addBoolParameter("observeTimeEventsReturn", proxy != nullptr, Parameter::out);
}

void FakeDevice::unobserve(Method&, Method& reply, const std::string& address) {
  auto* const proxy = dynamic_cast<FakeProxy*>(m_context->createProxy(kInterface, address));
  const std::lock_guard lock(m_mutex);
  const auto found = std::find(m_observers.begin(), m_observers.end(), proxy);
  const bool removed = found != m_observers.end();
  if (removed) m_observers.erase(found);
  reply.addBoolParameter("unobserveTimeEventsReturn", removed, Parameter::out);
}

int FakeDevice::notify(Method& method) {
  const std::lock_guard lock(m_mutex);
  return static_cast<int>(std::count_if(m_observers.begin(), m_observers.end(),
                                        [&](FakeProxy* proxy) { return proxy->send(method); }));
}

std::size_t FakeDevice::observers() {
  const std::lock_guard lock(m_mutex);
  return m_observers.size();
}

}  // namespace host
