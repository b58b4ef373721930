#include "remote/ControlLine.h"

#include <utility>

#include "remote/Peer.h"

namespace host {

ControlLine::ControlLine(std::shared_ptr<Peer> peer, std::uint32_t id)
    : m_peer(std::move(peer)), m_id(id) {
  ++m_peer->m_openLines;
}

ControlLine::~ControlLine() {
  --m_peer->m_openLines;
  if (m_peer->gone()) m_peer->outbox().ring();
}

bool ControlLine::reply(std::string_view json) {
  if (json.size() > kMaxPayload || m_replied.exchange(true)) return false;
  return m_peer->outbox().send({FrameKind::controlReply, m_id, json});
}

bool ControlLine::item(std::string_view json) {
  if (m_replied) return false;
  return m_peer->outbox().send({FrameKind::controlItem, m_id, json});
}

void ControlLine::onGone(std::function<void()> gone) {
  if (m_peer->gone()) {
    gone();
  } else {
    m_gone = std::move(gone);
  }
}

void ControlLine::tellGone() {
  if (const auto gone = std::exchange(m_gone, nullptr)) gone();
}

}  // namespace host
