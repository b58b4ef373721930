#include "remote/UnobservePeer.h"

#include <exception>
#include <optional>
#include <sstream>
#include <utility>

#include "Invoker.h"
#include "InvokerResponse.h"
#include "Method.h"
#include "remote/CodecTable.h"
#include "remote/RemoteServer.h"

namespace host {
namespace {

constexpr const char* kRequest = "unobserveTimeEvents";
constexpr const char* kResult = "unobserveTimeEventsReturn";

std::string encodedRequest() {
  Method method(kRequest, Method::call);
  std::stringstream stream;
  MessagePackCodec().encode(method, stream);
  return stream.str();
}

// Receives the answer in place of the disconnected peer.
class Answer : public InvokerResponse {
 public:
  Answer(std::string address, std::optional<bool>& removed)
      : m_address(std::move(address)), m_codec(kDefaultCodec), m_removed(removed) {}

  const char* getCodecName() override { return m_codec.c_str(); }
  const char* getReplyAddress() override { return m_address.c_str(); }
  void sendReply(const char* data, int length) override {
    std::stringstream stream(std::string(data, static_cast<std::size_t>(length)));
    Method reply;
    bool removed = false;
    if (!MessagePackCodec().decode(stream, reply)) return;
    if (reply.getBoolParameter(kResult, removed, Parameter::out)) m_removed = removed;
  }

 private:
  const std::string m_address;
  const std::string m_codec;
  std::optional<bool>& m_removed;
};

}  // namespace

Unobserved unobservePeer(const RemoteTarget& target, const std::string& address) try {
  static const std::string request = encodedRequest();
  std::optional<bool> removed;
  target.invoker.handleMessage(&target.service, request.data(), static_cast<int>(request.size()),
                               new Answer(address, removed));
  if (!removed) return Unobserved::noAnswer;
  return *removed ? Unobserved::one : Unobserved::nothingLeft;
} catch (const std::exception&) {
  return Unobserved::noAnswer;
}

}  // namespace host
