#include "conformance/FaultyRemote.h"

#include <algorithm>

#include "InvokerResponse.h"
#include "Method.h"
#include "conformance/Violation.h"

namespace conformance {
namespace {

const Violation kDefaultCodec("FrameworkContextPromise.KnowsItsCodecs",
                              "an unknown name gives the first codec");
const Violation kNewProxies("FrameworkContextPromise.HasOneProxyForAPeer",
                            "each call makes another proxy");
const Violation kAnyInterface("FrameworkContextPromise.HasNoOtherProxies",
                              "the interface's name is ignored");
const Violation kForgotten("FrameworkContextPromise.UnregistersAPeerThatHasDisconnected",
                           "a peer that has disconnected stays registered");
const Violation kUnbound("ProxyPromise.IsBoundBeforeItsFirstUse", "proxies are not bound");
const Violation kDropsMessages("ProxyRequestPromise.SendsToItsPeerOnly", "messages are dropped");
const Violation kFullQueue("ProxyRequestPromise.QueuesForAPeerThatDoesNotRead",
                           "a peer that does not read gets a hundred messages only");
const Violation kSaysSent("ProxyRequestPromise.ReportsThatThePeerIsGone",
                          "a message to a peer that is gone counts as sent");
const Violation kOneAddress("InvokerResponsePromise.NamesTheCallingPeer",
                            "all peers have the same address");
const Violation kUnknownCodec("InvokerResponsePromise.NamesTheCodecOfTheRequest",
                              "the codec's name is not one of getCodec");
const Violation kLongReplies("InvokerResponsePromise.SendsTheReplyToItsCaller",
                             "long replies are clipped");
const Violation kNoService("InvokerPromise.GetsEachRequestForTheService",
                           "the invoker gets no service");
const Violation kReadsAnything("MessageCodecPromise.RefusesOtherBytes",
                               "other bytes count as a method");
const Violation kNoBooleans("MessageCodecPromise.ReadsWhatItHasWritten", "booleans become numbers");

class FaultyResponse final : public InvokerResponse {
 public:
  explicit FaultyResponse(InvokerResponse* real) : m_real(real) {}
  const char* getCodecName() override {
    return kUnknownCodec.on() ? "unknown" : m_real->getCodecName();
  }
  const char* getReplyAddress() override {
    return kOneAddress.on() ? "peer" : m_real->getReplyAddress();
  }
  void sendReply(const char* data, int length) override {
    m_real->sendReply(data, kLongReplies.on() ? std::min(length, 65'535) : length);
  }

 private:
  const std::unique_ptr<InvokerResponse> m_real;
};

}  // namespace

class FaultyRemote::FaultyCodec final : public MessageCodec {
 public:
  explicit FaultyCodec(MessageCodec& real) : real(real) {}
  void encode(Method& method, std::iostream& stream) override { real.encode(method, stream); }
  bool decode(std::iostream& stream, Method& method) override {
    const bool decoded = real.decode(stream, method);
    if (decoded && kNoBooleans.on()) {
      Method numbers(method.getName().c_str(), method.getType());
      for (const Parameter& parameter : method.getParameters())
        numbers.addIntParameter(parameter.getName().c_str(), 1, parameter.getDirection());
      method = numbers;
    }
    return decoded || kReadsAnything.on();
  }

  MessageCodec& real;
};

class FaultyRemote::FaultyRequest final : public ProxyRequest {
 public:
  explicit FaultyRequest(ProxyRequest& real) : m_real(real) {}
  bool sendMethod(Method& method) override {
    if (kDropsMessages.on()) return true;
    if (kFullQueue.on() && ++m_sent > 100) return false;
    return m_real.sendMethod(method) || kSaysSent.on();
  }

 private:
  ProxyRequest& m_real;
  int m_sent = 0;
};

FaultyRemote::FaultyRemote(FrameworkContext& real) : m_real(real) {}
FaultyRemote::~FaultyRemote() = default;

MessageCodec* FaultyRemote::getCodec(const std::string& name) {
  MessageCodec* const real = m_real.getCodec(name);
  if (real == nullptr) return kDefaultCodec.on() ? m_real.getCodec("json") : nullptr;
  for (FaultyCodec& known : m_codecs)
    if (&known.real == real) return &known;
  return &m_codecs.emplace_back(*real);
}

Proxy* FaultyRemote::createProxy(const std::string& interfaceName, const std::string& address) {
  if (kNewProxies.on()) return &m_extraProxies.emplace_back();
  auto* const proxy = dynamic_cast<PlainProxy*>(m_real.createProxy(
      kAnyInterface.on() ? std::string("ClockServiceObserverIfc") : interfaceName, address));
  if (proxy == nullptr) return nullptr;
  if (dynamic_cast<FaultyRequest*>(proxy->request) == nullptr && proxy->request != nullptr)
    proxy->request = &m_requests.emplace_back(*proxy->request);
  if (kUnbound.on()) proxy->request = nullptr;
  return proxy;
}

void FaultyCalls::handleMessage(Executable* service, const char* message, int length,
                                InvokerResponse* response) {
  if (m_disconnecting && kForgotten.on()) {
    delete response;
    return;
  }
  m_real.handleMessage(kNoService.on() ? nullptr : service, message, length,
                       new FaultyResponse(response));
}

}  // namespace conformance
