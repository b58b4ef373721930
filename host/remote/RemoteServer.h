#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "FrameworkContext.h"
#include "remote/ClientLimits.h"
#include "remote/ControlChannel.h"
#include "remote/PeerProcess.h"

class Executable;
class Invoker;

namespace host {

class FrameTap;
class IoLoop;

// The target of remote calls: one device's service, its invoker, and the factory of observer
// proxies. All of it outlives RemoteServer::stop(). The service is destroyed before the server,
// which frees the proxies; their code outlives both.
struct RemoteTarget {
  Executable& service;
  Invoker& invoker;
  std::function<Proxy*()> makeProxy;  // a new one; null on failure
};

// Where a server listens, and who may connect.
struct ServerSockets {
  std::filesystem::path calls;    // the telephone's remote protocol: calls and events
  std::filesystem::path control;  // control requests; for the owner alone
  std::optional<gid_t> callers;   // a group that may use `calls` besides the owner
};

// Serves clients on two Unix stream sockets, and is the invoker's framework: codecs by name,
// observer proxies by peer. Refuses frames at the wrong socket. Owner: the host's main; constructed
// after the loop, before the device. Thread: the loop's, except FrameworkContext. Failure: an error
// of a client drops only that client, with one log line.
//
// A call: Acceptor, Connection (bytes to frames), onFrame, ServiceCalls, and back by the Outbox.
// An event, from any thread: the plug-in's proxy, Peer::sendMethod, Outbox.
// A disconnect: Connection, PeerRegistry (unobserves in turns), ServiceCalls.
// Limits: ClientLimits, Registrations, Outbox.
class RemoteServer : public FrameworkContext {
 public:
  struct Limits {
    // For the rest of an unfinished frame, and for the last answers of a client that sends no more.
    std::chrono::milliseconds unfinished{10'000};
    std::size_t clients = kMostClients;  // at the call socket
    std::size_t controlClients = kMostControlClients;
    std::size_t furtherRegistrations = kMostFurtherRegistrations;
    uid_t (*user)(int socket) = userAt;  // whose client it is
  };

  // Binds the sockets: replaces a stale one, throws host::Error for one with a running host.
  // Clients may connect from now on; serve() starts to answer them.
  RemoteServer(IoLoop& loop, ServerSockets sockets, ControlHandler control);
  RemoteServer(IoLoop& loop, ServerSockets sockets, ControlHandler control, Limits limits);
  virtual ~RemoteServer();
  RemoteServer(const RemoteServer&) = delete;
  RemoteServer& operator=(const RemoteServer&) = delete;

  // From now on calls reach `target`. REQUIRES: at most once.
  void serve(RemoteTarget target);

  // Refuses open requests, disconnects the clients, removes the sockets. The service keeps its
  // observers, since it is about to end; their proxies drop events until the server is destroyed.
  // Idempotent. REQUIRES: the target still exists.
  void stop();

  [[nodiscard]] std::size_t clients() const;

  [[nodiscard]] FrameTap& tap();  // of all clients' frames

  MessageCodec* getCodec(const std::string& name) override;
  Proxy* createProxy(const std::string& interfaceName, const std::string& address) override;

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace host
