#include "remote/RemoteServer.h"

#include <exception>
#include <map>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "Invoker.h"
#include "Logging.h"
#include "Proxy.h"
#include "remote/Acceptor.h"
#include "remote/CallResponse.h"
#include "remote/CodecTable.h"
#include "remote/Connection.h"
#include "remote/SocketFile.h"
#include "remote/TakeBack.h"

namespace host {
namespace {

constexpr std::string_view kObserverInterface = "ClockServiceObserverIfc";

}  // namespace

class RemoteServer::Impl final : public Connection::Listener {
 public:
  Impl(asio::io_context& loop, const std::filesystem::path& socket, ControlHandler control,
       Limits limits)
      : m_loop(loop), m_limits(limits), m_control(std::move(control)), m_file(socket) {}

  void serve(RemoteTarget target);
  void stop();
  std::size_t clients() const { return m_connections.size(); }
  MessageCodec* codec(const std::string& name) { return m_codecs.find(name); }
  Proxy* proxyFor(const std::string& address);

  std::optional<std::string> frame(Connection& from, const Frame& frame) override;
  void hungUp(Connection& from) override;
  void closed(Connection& from) override;

 private:
  void takeIn(Connection::Socket socket);
  std::optional<std::string> hello(Connection& from, std::string_view codec);

  asio::io_context& m_loop;
  const Limits m_limits;
  const ControlHandler m_control;
  CodecTable m_codecs;
  std::optional<SocketFile> m_file;
  std::optional<RemoteTarget> m_target;
  std::optional<Acceptor> m_acceptor;
  std::uint64_t m_lastNumber = 0;
  std::map<std::uint64_t, std::shared_ptr<Connection>> m_connections;
  std::vector<std::shared_ptr<Peer>> m_stuck;  // whose proxies the service may still use
  std::mutex m_peersMutex;
  std::map<std::string, std::shared_ptr<Peer>> m_peers;  // by address; guarded by m_peersMutex
};

void RemoteServer::Impl::serve(RemoteTarget target) {
  m_target.emplace(std::move(target));
  m_acceptor.emplace(m_loop, m_file->descriptor(),
                     [this](Connection::Socket socket) { takeIn(std::move(socket)); });
}

void RemoteServer::Impl::stop() {
  m_acceptor.reset();
  while (!m_connections.empty()) m_connections.begin()->second->close();
  m_file.reset();
}

void RemoteServer::Impl::takeIn(Connection::Socket socket) {
  const std::uint64_t number = ++m_lastNumber;
  const auto connection =
      std::make_shared<Connection>(std::move(socket), number, *this, m_limits.unfinished);
  m_connections.emplace(number, connection);
  connection->open();
  connection->peer().setCodec(std::string(kDefaultCodec), *m_codecs.find(kDefaultCodec));
  const std::lock_guard lock(m_peersMutex);
  m_peers.emplace(connection->peer().address(), connection->sharedPeer());
}

std::optional<std::string> RemoteServer::Impl::frame(Connection& from, const Frame& frame) try {
  switch (frame.kind) {
    case FrameKind::call:
      m_target->invoker.handleMessage(&m_target->service, frame.payload.data(),
                                      static_cast<int>(frame.payload.size()),
                                      new CallResponse(from.sharedPeer(), frame.id));
      return std::nullopt;
    case FrameKind::controlRequest:
      m_control({std::string(frame.payload), from.peer().openLine(frame.id)});
      return std::nullopt;
    case FrameKind::hello:
      return hello(from, frame.payload);
    default:
      return "frame of kind " + std::to_string(static_cast<int>(frame.kind)) +
             ", which clients do not send";
  }
} catch (const std::exception& error) {
  return std::string("its request failed: ") + error.what();
}

std::optional<std::string> RemoteServer::Impl::hello(Connection& from, std::string_view codec) {
  if (from.heard()) return "codec chosen after the first frame";
  MessageCodec* const found = m_codecs.find(codec);
  if (!found) return "unknown codec \"" + std::string(codec.substr(0, 40)) + "\"";
  from.peer().setCodec(std::string(codec), *found);
  return std::nullopt;
}

void RemoteServer::Impl::hungUp(Connection& from) {
  Peer& peer = from.peer();
  if (peer.hasProxy()) {
    if (takeBack(*m_target, peer.address())) {
      peer.freeProxy();
    } else {
      logAppUni("clockhost", 2, __FILE__, __LINE__, "%s cannot be taken out of the service",
                peer.address().c_str());
      m_stuck.push_back(from.sharedPeer());
    }
  }
  const std::lock_guard lock(m_peersMutex);
  m_peers.erase(peer.address());
}

void RemoteServer::Impl::closed(Connection& from) {
  m_connections.erase(from.number());
}

Proxy* RemoteServer::Impl::proxyFor(const std::string& address) try {
  std::shared_ptr<Peer> peer;
  {
    const std::lock_guard lock(m_peersMutex);
    const auto found = m_peers.find(address);
    if (found == m_peers.end()) return nullptr;
    peer = found->second;
  }
  return peer->proxy(m_target->makeProxy);
} catch (const std::exception& error) {
  logAppUni("clockhost", 2, __FILE__, __LINE__, "no proxy for %s: %s", address.c_str(),
            error.what());
  return nullptr;
}

RemoteServer::RemoteServer(asio::io_context& loop, const std::filesystem::path& socket,
                           ControlHandler control)
    : RemoteServer(loop, socket, std::move(control), Limits{}) {}

RemoteServer::RemoteServer(asio::io_context& loop, const std::filesystem::path& socket,
                           ControlHandler control, Limits limits)
    : m_impl(std::make_unique<Impl>(loop, socket, std::move(control), limits)) {}

RemoteServer::~RemoteServer() {
  stop();
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

MessageCodec* RemoteServer::getCodec(const std::string& name) {
  return m_impl->codec(name);
}

Proxy* RemoteServer::createProxy(const std::string& interfaceName, const std::string& address) {
  return interfaceName == kObserverInterface ? m_impl->proxyFor(address) : nullptr;
}

}  // namespace host
