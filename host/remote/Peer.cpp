#include "remote/Peer.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <sstream>
#include <utility>

#include "MessageCodec.h"
#include "Proxy.h"
#include "remote/ClientBounds.h"
#include "remote/ControlLine.h"
#include "remote/PeerProcess.h"

namespace host {
namespace {

std::string originOf(int socket) {
  const auto process = processAt(socket);
  if (!process) return "unknown process";
  return "uid " + std::to_string(process->uid) + ", pid " + std::to_string(process->pid);
}

}  // namespace

Peer::Peer(std::string address, int socket, std::function<void()> attention)
    : m_address(std::move(address)),
      m_origin(originOf(socket)),
      m_outbox(socket, std::move(attention)) {}

Peer::~Peer() = default;

void Peer::setCodec(std::string name, MessageCodec& codec) {
  m_codecName = std::move(name);
  m_codec = &codec;
}

// Any exception drops only this client, and does not reach the service or its other observers.
bool Peer::sendMethod(Method& method) try {
  if (m_gone) return false;
  // Reused: constructing a stream costs more than everything else here.
  thread_local std::stringstream stream;
  stream.str("");
  stream.clear();
  m_codec->encode(method, stream);
  if (stream) return m_outbox.send({FrameKind::event, 0, stream.view()});
  m_outbox.giveUp(ENOMEM);
  return false;
} catch (const std::exception&) {
  m_outbox.giveUp(ENOMEM);
  return false;
}

Proxy* Peer::proxy(const std::function<Proxy*()>& make) {
  const MutexLock lock(m_proxyMutex);
  if (!m_proxy && !m_gone) {
    m_proxy.reset(make());
    if (m_proxy) m_proxy->initProxy(*this);
  }
  return m_proxy.get();
}

bool Peer::hasProxy() const {
  const MutexLock lock(m_proxyMutex);
  return m_proxy != nullptr;
}

void Peer::freeProxy() {
  const MutexLock lock(m_proxyMutex);
  m_proxy.reset();
}

std::shared_ptr<ControlChannel> Peer::openLine(std::uint32_t id) {
  std::erase_if(m_lines, [](const auto& line) { return line.expired(); });
  auto line = std::make_shared<ControlLine>(shared_from_this(), id);
  m_lines.push_back(line);
  return line;
}

bool Peer::mayGoOn() const {
  return m_openLines < kMostOpenRequests && m_holds == 0 && m_outbox.queued() < kMostUnread;
}

void Peer::answerAll(std::string_view json) {
  for (const auto& held : m_lines) {
    if (const auto line = held.lock()) line->answerAtEnd(json);
  }
}

void Peer::hangUp() {
  m_gone = true;
  for (const auto& held : std::exchange(m_lines, {})) {
    if (const auto line = held.lock()) line->tellGone();
  }
}

}  // namespace host
