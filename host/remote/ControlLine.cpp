#include "remote/ControlLine.h"

#include <exception>
#include <utility>

#include "remote/Peer.h"

namespace host {
namespace {

constexpr std::string_view kNoAnswer = R"({"ok":false,"error":"the host could not answer"})";

}  // namespace

ControlLine::ControlLine(std::shared_ptr<Peer> peer, std::uint32_t id)
    : m_peer(std::move(peer)), m_id(id) {
  ++m_peer->m_openLines;
}

// The request was lost, perhaps for lack of memory: a refusal spares the client the wait. During
// stack unwinding the client is about to be dropped.
ControlLine::~ControlLine() {
  const bool lost = !m_replied && std::uncaught_exceptions() == 0;
  if (lost) m_peer->outbox().send({FrameKind::controlReply, m_id, kNoAnswer});
  if (m_holding) --m_peer->m_holds;
  --m_peer->m_openLines;
  if (m_peer->gone() || m_peer->m_held) m_peer->outbox().ring();
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

const std::string& ControlLine::origin() const {
  return m_peer->origin();
}

bool ControlLine::wanted() const {
  return !m_replied && m_peer->outbox().state() == Outbox::State::open;
}

void ControlLine::holdNext() {
  if (std::exchange(m_holding, true)) return;
  ++m_peer->m_holds;
}

void ControlLine::answerAtEnd(std::string_view json) {
  if (!m_gone) reply(json);
}

void ControlLine::tellGone() {
  if (const auto gone = std::exchange(m_gone, nullptr)) gone();
}

}  // namespace host
