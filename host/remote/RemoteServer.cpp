#include "remote/RemoteServer.h"

#include <algorithm>
#include <exception>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <utility>

#include "Invoker.h"
#include "Logging.h"
#include "Proxy.h"
#include "base/Descriptor.h"
#include "base/Error.h"
#include "base/LogLevels.h"
#include "base/Origin.h"
#include "base/PrintableText.h"
#include "framework/MemoryReserve.h"
#include "remote/Acceptor.h"
#include "remote/ClientLimits.h"
#include "remote/CodecTable.h"
#include "remote/Connection.h"
#include "remote/FrameTap.h"
#include "remote/PeerRegistry.h"
#include "remote/Registrations.h"
#include "remote/ServiceCalls.h"
#include "remote/SocketFile.h"
#include "remote/TurnQueue.h"

namespace host {
namespace {

using Endpoint = Connection::Endpoint;

constexpr std::string_view kObserverInterface = "ClockServiceObserverIfc";
constexpr std::string_view kShuttingDown = R"({"ok":false,"error":"the host is shutting down"})";

std::string refusal(const std::string& error) {
  const nlohmann::json answer = {{"ok", false}, {"error", error}};
  return answer.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace

class RemoteServer::Impl final : public Connection::Listener {
 public:
  Impl(IoLoop& loop, ServerSockets sockets, ControlHandler control, Limits limits)
      : m_loop(loop),
        m_limits(limits),
        m_control(std::move(control)),
        m_registrations(limits.clients, limits.furtherRegistrations),
        m_sockets(std::move(sockets)),
        m_calls(Endpoint::calls, m_sockets.calls, m_sockets.callers),
        m_controls(Endpoint::control, m_sockets.control, {}) {}

  void serve(RemoteTarget target);
  void stop();
  std::size_t clients() const { return m_clients.size(); }
  FrameTap& tap() { return *m_tap; }
  MessageCodec* codec(const std::string& name) { return m_codecs.find(name); }
  Proxy* proxyFor(const std::string& address);

  std::optional<std::string> onFrame(Connection& from, const Frame& frame) override;
  std::size_t framesAtOnce(const Connection& from) const override;
  void onTurnOver(Connection& from) override;
  void onDisconnect(Connection& from) override { m_peers.disconnected(from.peer()); }
  void onClosed(Connection& from) override { m_clients.erase(from.number()); }

 private:
  struct Listening {
    Listening(Endpoint at, const std::filesystem::path& path, std::optional<gid_t> group)
        : endpoint(at), file(std::in_place, path, group) {}

    const Endpoint endpoint;
    std::optional<SocketFile> file;
    std::optional<Acceptor> acceptor;
    ConnectionLimit limit;
  };
  struct Client {
    std::shared_ptr<Connection> connection;
    ConnectionLimit::Slot slot;
  };

  void addClient(Descriptor socket, Listening& at);
  [[nodiscard]] ConnectionLimit::Slot takeSlot(const Descriptor& socket, Listening& at);
  std::optional<std::string> setCodec(Connection& from, std::string_view name);
  [[nodiscard]] bool refuseAtWrongSocket(Connection& from, const Frame& frame) const;

  IoLoop& m_loop;
  const Limits m_limits;
  const ControlHandler m_control;
  const std::shared_ptr<FrameTap> m_tap = std::make_shared<FrameTap>();
  Registrations m_registrations;
  CodecTable m_codecs;
  TurnQueue m_turns{m_loop};
  PeerRegistry m_peers{m_turns, m_registrations,
                       [this](const auto& address) { return unobservePeer(*m_target, address); }};
  const ServerSockets m_sockets;
  Listening m_calls;
  Listening m_controls;
  std::optional<RemoteTarget> m_target;
  std::uint64_t m_lastNumber = 0;
  std::uint64_t m_lastInTurn = 0;  // the number of a client
  std::map<std::uint64_t, Client> m_clients;
};

void RemoteServer::Impl::serve(RemoteTarget target) {
  m_target.emplace(std::move(target));
  for (Listening* const at : {&m_calls, &m_controls}) {
    at->acceptor.emplace(m_loop, at->file->descriptor(),
                         [this, at](Descriptor socket) { addClient(std::move(socket), *at); });
  }
}

void RemoteServer::Impl::stop() {
  for (Listening* const at : {&m_calls, &m_controls}) at->acceptor.reset();
  m_peers.end();
  for (const auto& [number, client] : m_clients) client.connection->peer().answerAll(kShuttingDown);
  while (!m_clients.empty()) std::shared_ptr(m_clients.begin()->second.connection)->end();
  for (Listening* const at : {&m_calls, &m_controls}) at->file.reset();
}

ConnectionLimit::Slot RemoteServer::Impl::takeSlot(const Descriptor& socket, Listening& at) try {
  const std::size_t most = at.endpoint == Endpoint::control
                               ? m_limits.controlClients
                               : std::min(m_limits.clients, clientsWithDescriptors());
  return at.limit.take(m_limits.user(socket.get()), most);
} catch (const Error& error) {
  Acceptor::refuse(socket.get(), error.what());
  throw;
}

void RemoteServer::Impl::addClient(Descriptor socket, Listening& at) {
  ConnectionLimit::Slot slot = takeSlot(socket, at);
  m_peers.retry();
  const std::uint64_t number = ++m_lastNumber;
  const auto connection = std::make_shared<Connection>(m_loop, std::move(socket), at.endpoint,
                                                       number, *this, m_limits.unfinished);
  connection->makePeer(m_tap);
  connection->peer().setCodec(std::string(kDefaultCodec), *m_codecs.find(kDefaultCodec));
  const auto kept = m_clients.emplace(number, Client{connection, std::move(slot)}).first;
  try {
    m_peers.add(connection->sharedPeer());
    connection->read();
  } catch (...) {
    m_peers.disconnected(connection->peer());
    m_clients.erase(kept);
    throw;
  }
}

std::optional<std::string> RemoteServer::Impl::onFrame(Connection& from, const Frame& frame) try {
  if (!MemoryReserve::refill()) return "out of memory";
  from.peer().showReceived(frame);
  if (refuseAtWrongSocket(from, frame)) return std::nullopt;
  const OriginScope origin(from.peer().origin(), frame.kind == FrameKind::call ? frame.id : 0);
  switch (frame.kind) {
    case FrameKind::call:
      executeCall(*m_target, from.sharedPeer(), frame);
      return std::nullopt;
    case FrameKind::controlRequest:
      if (from.peer().outbox().state() != Outbox::State::open) return std::nullopt;  // disconnected
      m_control({std::string(frame.payload), from.peer().openChannel(frame.id)});
      return std::nullopt;
    case FrameKind::hello:
      return setCodec(from, frame.payload);
    default:
      return "frame of kind " + std::to_string(static_cast<int>(frame.kind)) +
             ", which clients do not send";
  }
} catch (const std::exception& error) {
  return std::string("its request failed: ") + error.what();
}

bool RemoteServer::Impl::refuseAtWrongSocket(Connection& from, const Frame& frame) const {
  const bool atCalls = from.endpoint() == Endpoint::calls;
  if (frame.kind != (atCalls ? FrameKind::controlRequest : FrameKind::call)) return false;
  const std::string error =
      atCalls ? "control requests are not taken here; send them to " + m_sockets.control.string()
              : "calls are not taken here; send them to " + m_sockets.calls.string();
  from.peer().openChannel(frame.id)->reply(refusal(error));
  return true;
}

std::optional<std::string> RemoteServer::Impl::setCodec(Connection& from, std::string_view name) {
  if (from.hasSentFrames()) return "codec chosen after the first frame";
  const bool timed = name.ends_with(kTimedEvents);
  const std::string_view codec = name.substr(0, name.size() - (timed ? kTimedEvents.size() : 0));
  MessageCodec* const found = m_codecs.find(codec);
  if (!found) return "unknown codec " + quotedText(name);
  from.peer().setCodec(std::string(codec), *found, timed);
  return std::nullopt;
}

// A client that nobody waits for gets a full turn at once, so that its answers leave together.
// While others wait for a turn, the client that had the last one must wait, too.
std::size_t RemoteServer::Impl::framesAtOnce(const Connection& from) const {
  const bool hadLastTurn = from.number() == m_lastInTurn;
  if (m_turns.idle() && (hadLastTurn || m_loop.runsTheOnlyHandler())) return kFramesInTurn;
  return hadLastTurn ? 0 : kFramesAtOnce;
}

void RemoteServer::Impl::onTurnOver(Connection& from) {
  m_turns.add([this, weak = from.weak_from_this()] {
    const auto connection = weak.lock();
    if (!connection) return;
    m_lastInTurn = connection->number();
    connection->takeTurn();
  });
}

Proxy* RemoteServer::Impl::proxyFor(const std::string& address) try {
  const std::shared_ptr<Peer> peer = m_peers.find(address);
  if (!peer || !m_registrations.mayUseProxy(*peer)) return nullptr;
  return peer->proxy(m_target->makeProxy);
} catch (const std::exception& error) {
  logAppUni("clockhost", kLogError, __FILE__, __LINE__, "no proxy for %s: %s", address.c_str(),
            error.what());
  return nullptr;
}

RemoteServer::RemoteServer(IoLoop& loop, ServerSockets sockets, ControlHandler control)
    : RemoteServer(loop, std::move(sockets), std::move(control), Limits{}) {}

RemoteServer::RemoteServer(IoLoop& loop, ServerSockets sockets, ControlHandler control,
                           Limits limits)
    : m_impl(std::make_unique<Impl>(loop, std::move(sockets), std::move(control), limits)) {}

RemoteServer::~RemoteServer() {
  try {
    stop();
  } catch (const std::exception& error) {
    logAppUni("clockhost", kLogError, __FILE__, __LINE__, "disconnecting the clients failed: %s",
              error.what());
  }
}

void RemoteServer::serve(RemoteTarget target) {
  m_impl->serve(std::move(target));
}

void RemoteServer::stop() {
  m_impl->stop();
}

std::size_t RemoteServer::clients() const {
  return m_impl->clients();
}

FrameTap& RemoteServer::tap() {
  return m_impl->tap();
}

MessageCodec* RemoteServer::getCodec(const std::string& name) {
  return m_impl->codec(name);
}

Proxy* RemoteServer::createProxy(const std::string& interfaceName, const std::string& address) {
  return interfaceName == kObserverInterface ? m_impl->proxyFor(address) : nullptr;
}

}  // namespace host
