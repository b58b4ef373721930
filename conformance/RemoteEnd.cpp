#include "RemoteEnd.h"

#include <algorithm>
#include <sstream>

#include "InvokerResponse.h"
#include "MessageCodec.h"
#include "Method.h"
#include "MethodText.h"

namespace conformance {

void EchoInvoker::handleMessage(Executable* service, const char* message, int length,
                                InvokerResponse* response) {
  const std::unique_ptr<InvokerResponse> owned(response);
  requests.push_back({service, "", response->getCodecName(), response->getReplyAddress()});
  MessageCodec* const codec = m_context->getCodec(response->getCodecName());
  if (codec == nullptr) return;
  std::stringstream stream(std::string(message, static_cast<std::size_t>(length)));
  Method call;
  if (!codec->decode(stream, call)) return;
  requests.back().text = textOf(call);
  Method reply = replyTo(call, requests.back().address);
  std::stringstream encoded;
  codec->encode(reply, encoded);
  std::string bytes = encoded.str();
  response->sendReply(bytes.data(), static_cast<int>(bytes.size()));
  std::fill(bytes.begin(), bytes.end(), '?');  // the framework has a copy
}

Method EchoInvoker::replyTo(const Method& call, const std::string& address) {
  Method reply(call.getName().c_str(), Method::reply);
  const bool observes = call.getName() == "observeTimeEvents";
  if (observes || call.getName() == "unobserveTimeEvents") {
    auto* const proxy =
        dynamic_cast<PlainProxy*>(m_context->createProxy("ClockServiceObserverIfc", address));
    const auto found = std::find(observers.begin(), observers.end(), proxy);
    const bool known = found != observers.end();
    if (observes) proxies.push_back(proxy);
    if (observes && proxy != nullptr) observers.push_back(proxy);
    if (!observes && known) {
      if (onUnobserve) onUnobserve(proxy);
      observers.erase(found);
    }
    const std::string result = call.getName() + "Return";
    reply.addBoolParameter(result.c_str(), observes ? proxy != nullptr : known, Parameter::out);
  }
  for (const Parameter& parameter : call.getParameters()) {
    const char* const name = parameter.getName().c_str();
    if (parameter.getType() == Parameter::text) {
      reply.addStringParameter(name, parameter.getString(), Parameter::out);
    } else {
      reply.addIntParameter(name, parameter.getInt(), Parameter::out);
    }
  }
  return reply;
}

RemotePromise::RemotePromise() {
  m_invoker.initInvoker(&platform().remote());
  platform().serve(m_service, m_invoker, [] { return new PlainProxy; });
}

RemotePromise::Client RemotePromise::connect() {
  const int number = platform().connect();
  Method hello("hello", Method::call);
  EXPECT_TRUE(platform().call(number, hello));
  return {number, m_invoker.requests.empty() ? "" : m_invoker.requests.back().address};
}

std::string RemotePromise::replyTo(const Client& client, Method call) {
  const auto reply = platform().call(client.number, call);
  return reply ? textOf(*reply) : "none";
}

PlainProxy* RemotePromise::observe(const Client& client) {
  EXPECT_EQ(replyTo(client, Method("observeTimeEvents", Method::call)),
            "reply observeTimeEvents ->observeTimeEventsReturn=true");
  return m_invoker.proxies.empty() ? nullptr : m_invoker.proxies.back();
}

Method eventOf(int number) {
  Method event("event", Method::call);
  event.addIntParameter("number", number, Parameter::in);
  return event;
}

}  // namespace conformance
