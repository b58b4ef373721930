#include "remote/ServiceCalls.h"

#include <array>
#include <cstddef>
#include <exception>
#include <new>
#include <optional>
#include <sstream>
#include <utility>

#include "Invoker.h"
#include "InvokerResponse.h"
#include "Logging.h"
#include "Method.h"
#include "base/LogLevels.h"
#include "remote/CodecTable.h"
#include "remote/Peer.h"
#include "remote/RemoteServer.h"

namespace host {
namespace {

thread_local std::string_view t_call;

class CallScope {
 public:
  explicit CallScope(std::string_view call) { t_call = call; }
  ~CallScope() { t_call = {}; }
  CallScope(const CallScope&) = delete;
  CallScope& operator=(const CallScope&) = delete;
};

// Memory for one object at a time: the response of the call in progress, which the invoker deletes
// on the same thread. A larger object, or a second one, gets heap memory.
class ResponseMemory {
 public:
  void* take(std::size_t size) {
    if (m_taken || size > m_buffer.size()) return ::operator new(size);
    m_taken = true;
    return m_buffer.data();
  }
  void giveBack(void* place) {
    if (place != m_buffer.data()) return ::operator delete(place);
    m_taken = false;
  }

 private:
  alignas(std::max_align_t) std::array<std::byte, 64> m_buffer;
  bool m_taken = false;
};
thread_local ResponseMemory t_responseMemory;

// Sends the reply of one call to its client.
class ClientResponse : public InvokerResponse {
 public:
  static void* operator new(std::size_t size) { return t_responseMemory.take(size); }
  static void operator delete(void* response) { t_responseMemory.giveBack(response); }

  ClientResponse(std::shared_ptr<Peer> client, std::uint32_t id)
      : m_client(std::move(client)), m_id(id) {}

  const char* getCodecName() override { return m_client->codecName().c_str(); }
  const char* getReplyAddress() override { return m_client->address().c_str(); }
  void sendReply(const char* data, int length) override {
    if (length < 0 || std::exchange(m_replied, true)) return;
    const std::string_view payload(data, static_cast<std::size_t>(length));
    if (payload.size() <= kMaxPayload) {
      m_client->send({FrameKind::reply, m_id, payload});
    } else {
      logAppUni("clockhost", kLogError, __FILE__, __LINE__,
                "reply of %d bytes to %s is too long: dropped", length,
                m_client->address().c_str());
    }
  }

 private:
  const std::shared_ptr<Peer> m_client;
  const std::uint32_t m_id;
  bool m_replied = false;
};

std::string encodedUnobserve() {
  Method method("unobserveTimeEvents", Method::call);
  std::stringstream stream;
  MessagePackCodec().encode(method, stream);
  return stream.str();
}

// Receives the answer in place of the disconnected peer.
class UnobserveResponse : public InvokerResponse {
 public:
  UnobserveResponse(std::string address, std::optional<bool>& removed)
      : m_address(std::move(address)), m_removed(removed) {}

  const char* getCodecName() override {
    static const std::string name(kDefaultCodec);
    return name.c_str();
  }
  const char* getReplyAddress() override { return m_address.c_str(); }
  void sendReply(const char* data, int length) override {
    std::stringstream stream(std::string(data, static_cast<std::size_t>(length)));
    Method reply;
    bool removed = false;
    if (MessagePackCodec().decode(stream, reply) &&
        reply.getBoolParameter("unobserveTimeEventsReturn", removed, Parameter::out)) {
      m_removed = removed;
    }
  }

 private:
  const std::string m_address;
  std::optional<bool>& m_removed;
};

}  // namespace

void executeCall(const RemoteTarget& target, const std::shared_ptr<Peer>& client,
                 const Frame& call) {
  const CallScope scope(call.payload);
  target.invoker.handleMessage(&target.service, call.payload.data(),
                               static_cast<int>(call.payload.size()),
                               new ClientResponse(client, call.id));
}

std::string_view callInProgress() {
  return t_call;
}

Unobserved unobservePeer(const RemoteTarget& target, const std::string& address) try {
  static const std::string request = encodedUnobserve();
  std::optional<bool> removed;
  target.invoker.handleMessage(&target.service, request.data(), static_cast<int>(request.size()),
                               new UnobserveResponse(address, removed));
  if (!removed) return Unobserved::noAnswer;
  return *removed ? Unobserved::one : Unobserved::nothingLeft;
} catch (const std::exception&) {
  return Unobserved::noAnswer;
}

}  // namespace host
