#include "remote/CallResponse.h"

#include <utility>

#include "Logging.h"
#include "remote/Peer.h"

namespace host {

CallResponse::CallResponse(std::shared_ptr<Peer> peer, std::uint32_t id)
    : m_peer(std::move(peer)), m_id(id) {}

const char* CallResponse::getCodecName() {
  return m_peer->codecName().c_str();
}

const char* CallResponse::getReplyAddress() {
  return m_peer->address().c_str();
}

void CallResponse::sendReply(const char* data, int length) {
  if (length < 0 || std::exchange(m_replied, true)) return;
  const std::string_view payload(data, static_cast<std::size_t>(length));
  if (payload.size() > kMaxPayload) {
    logAppUni("clockhost", 2, __FILE__, __LINE__, "reply of %d bytes to %s is too long: dropped",
              length, m_peer->address().c_str());
    return;
  }
  m_peer->outbox().send({FrameKind::reply, m_id, payload});
}

}  // namespace host
