#include "remote/Peer.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <new>
#include <sstream>
#include <utility>

#include "MessageCodec.h"
#include "Method.h"
#include "Proxy.h"
#include "remote/ClientLimits.h"
#include "remote/EventStamp.h"
#include "remote/FrameTap.h"
#include "remote/PeerProcess.h"

namespace host {
namespace {

constexpr std::string_view kNoAnswer = R"({"ok":false,"error":"the host could not answer"})";

// An encoded event. The service sends the same event to every observer, so it is encoded only once.
struct EncodedEvent {
  // Throws std::exception; then there is no encoded event.
  void encode(Method& method, const std::string& codecName, MessageCodec& by) {
    codec.clear();
    stream.str("");
    stream.clear();
    by.encode(method, stream);
    if (!stream) throw std::bad_alloc();
    timed.assign(kEventStampSize, '\0').append(stream.view());
    event = method;
    codec = codecName;
  }

  Frame frame() const {
    return {FrameKind::event, 0, std::string_view(timed).substr(kEventStampSize)};
  }

  // With the time of now, which the same event may have at another time.
  Frame timedFrame() {
    const EventStampBytes now = encodeEventStamp(eventStampNow());
    std::copy(now.begin(), now.end(), timed.begin());
    return {FrameKind::timedEvent, 0, timed};
  }

  std::string codec;  // empty: there is no encoded event
  Method event;
  std::stringstream stream;
  std::string timed;  // an EventStamp, and the encoded event
};

thread_local EncodedEvent t_latestEvent;

std::string originOf(int socket) {
  const auto process = processAt(socket);
  if (!process) return "unknown process";
  return "uid " + std::to_string(process->uid) + ", pid " + std::to_string(process->pid);
}

}  // namespace

// The control channel of one request of this client.
class Peer::Channel : public ControlChannel {
 public:
  Channel(std::shared_ptr<Peer> peer, std::uint32_t id) : m_peer(std::move(peer)), m_id(id) {
    ++m_peer->m_openChannels;
  }

  // The request was lost, perhaps for lack of memory: a refusal spares the client the wait. During
  // stack unwinding the client is about to be dropped.
  ~Channel() override {
    const bool lost = !m_replied && std::uncaught_exceptions() == 0;
    if (lost) m_peer->send({FrameKind::controlReply, m_id, kNoAnswer});
    if (m_holding) --m_peer->m_holds;
    --m_peer->m_openChannels;
    if (m_peer->m_disconnected || m_peer->m_paused) m_peer->m_outbox.wakeLoop();
  }

  bool reply(std::string_view json) override {
    if (json.size() > kMaxPayload || m_replied.exchange(true)) return false;
    return m_peer->send({FrameKind::controlReply, m_id, json});
  }

  bool item(std::string_view json) override {
    return !m_replied && m_peer->send({FrameKind::controlItem, m_id, json});
  }

  void onGone(std::function<void()> gone) override {
    if (m_peer->m_disconnected) return gone();
    m_gone = std::move(gone);
  }

  bool wanted() const override {
    return !m_replied && m_peer->m_outbox.state() == Outbox::State::open;
  }

  bool hasRoom() const override { return m_peer->m_outbox.queued() < kMostUnread; }

  void holdNext() override {
    if (!std::exchange(m_holding, true)) ++m_peer->m_holds;
  }

  [[nodiscard]] const std::string& origin() const override { return m_peer->m_origin; }

  // Replies, unless onGone was called: a stream ends with its connection.
  void replyUnlessStream(std::string_view json) {
    if (!m_gone) reply(json);
  }

  // The client has disconnected. Thread: the loop's.
  void notifyGone() {
    if (const auto gone = std::exchange(m_gone, nullptr)) gone();
  }

 private:
  const std::shared_ptr<Peer> m_peer;
  const std::uint32_t m_id;
  std::atomic<bool> m_replied = false;
  bool m_holding = false;        // the loop's, until the end
  std::function<void()> m_gone;  // the loop's alone
};

Peer::Peer(std::string address, int socket, std::function<void()> wake,
           std::shared_ptr<FrameTap> tap)
    : m_address(std::move(address)),
      m_origin(originOf(socket)),
      m_outbox(socket, std::move(wake)),
      m_tap(std::move(tap)) {}

Peer::~Peer() = default;

void Peer::setCodec(std::string name, MessageCodec& codec, bool timed) {
  m_codecName = std::move(name);
  m_codec = &codec;
  m_timed = timed;
}

bool Peer::send(const Frame& frame) {
  // First, because the client's next frame may come at once.
  if (m_tap && m_tap->hasListeners() && m_outbox.state() == Outbox::State::open) show(frame, false);
  return m_outbox.send(frame);
}

void Peer::show(const Frame& frame, bool fromClient) {
  if (m_tap != nullptr) m_tap->show({m_address, m_origin, *m_codec, fromClient, frame});
}

// Any exception drops only this client, and does not reach the service or its other observers.
bool Peer::sendMethod(Method& method) try {
  if (m_disconnected) return false;
  EncodedEvent& latest = t_latestEvent;
  if (latest.codec != m_codecName || !(latest.event == method)) {
    latest.encode(method, m_codecName, *m_codec);
  }
  return send(m_timed ? latest.timedFrame() : latest.frame());
} catch (const std::exception&) {
  m_outbox.fail(ENOMEM);
  return false;
}

Proxy* Peer::proxy(const std::function<Proxy*()>& make) {
  const MutexLock lock(m_proxyMutex);
  if (!m_proxy && !m_disconnected) {
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

std::shared_ptr<ControlChannel> Peer::openChannel(std::uint32_t id) {
  std::erase_if(m_channels, [](const auto& channel) { return channel.expired(); });
  auto channel = std::make_shared<Channel>(shared_from_this(), id);
  m_channels.push_back(channel);
  return channel;
}

bool Peer::mayHandleNext() const {
  return m_openChannels < kMostOpenRequests && m_holds == 0 && m_outbox.queued() < kMostUnread;
}

void Peer::answerAll(std::string_view json) {
  for (const auto& open : m_channels) {
    if (const auto channel = open.lock()) channel->replyUnlessStream(json);
  }
}

void Peer::disconnect() {
  m_disconnected = true;
  for (const auto& open : std::exchange(m_channels, {})) {
    if (const auto channel = open.lock()) channel->notifyGone();
  }
}

}  // namespace host
