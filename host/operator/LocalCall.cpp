#include "operator/LocalCall.h"

#include <sstream>

#include "Invoker.h"
#include "InvokerResponse.h"
#include "base/Origin.h"
#include "remote/JsonCodec.h"
#include "runtime/Device.h"

namespace host {
namespace {

// Keeps the reply. The invoker deletes the response.
class LocalResponse : public InvokerResponse {
 public:
  LocalResponse(std::string address, std::string& reply)
      : m_address(std::move(address)), m_reply(reply) {}

  const char* getCodecName() override { return "json"; }
  const char* getReplyAddress() override { return m_address.c_str(); }
  void sendReply(const char* data, int length) override {
    m_reply.assign(data, static_cast<std::size_t>(length));
  }

 private:
  const std::string m_address;
  std::string& m_reply;
};

}  // namespace

std::optional<Method> callService(Device& device, Method& call, const std::string& address) {
  JsonCodec codec;
  std::stringstream request;
  codec.encode(call, request);
  const std::string message = request.str();
  std::string reply;
  device.invoker().handleMessage(&device.service(), message.data(),
                                 static_cast<int>(message.size()),
                                 new LocalResponse(address, reply));
  std::stringstream stream(reply);
  Method method;
  if (reply.empty() || !codec.decode(stream, method)) return std::nullopt;
  return method;
}

std::optional<Method> askService(Device& device, Method& call) {
  const QuestionScope question;
  return callService(device, call);
}

}  // namespace host
