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
#include "remote/ClientBounds.h"
#include "remote/ControlChannel.h"
#include "remote/PeerProcess.h"

class Executable;
class Invoker;

namespace asio {
class io_context;
}

namespace host {

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
  std::filesystem::path control;  // control requests; the owner's alone
  std::optional<gid_t> callers;   // a group that may use `calls` beside the owner
};

// Serves clients on two Unix stream sockets, and is the invoker's framework: codecs by name,
// observer proxies by peer. Refuses frames at the wrong socket. Calls run on the loop's thread;
// events may be sent from any. Owner: the host's main; constructed after the loop, before the
// device. Thread: the loop's, except FrameworkContext. Failure: an error of a client drops only
// that client, with one log line.
class RemoteServer : public FrameworkContext {
 public:
  struct Limits {
    std::chrono::milliseconds unfinished{
        10000};                          // for the rest of a begun frame; for a last answer
    std::size_t clients = kMostClients;  // at the socket of calls
    std::size_t controlClients = kMostControlClients;  // at the other
    std::size_t furtherRegistrations = kMostFurtherRegistrations;
    uid_t (*user)(int socket) = userAt;  // to whom a client's place counts
  };

  // Binds the sockets: replaces a stale one, throws host::Error for one with a running host.
  // Clients may connect from now on; serve() starts to answer them.
  RemoteServer(asio::io_context& loop, ServerSockets sockets, ControlHandler control);
  RemoteServer(asio::io_context& loop, ServerSockets sockets, ControlHandler control,
               Limits limits);
  virtual ~RemoteServer();
  RemoteServer(const RemoteServer&) = delete;
  RemoteServer& operator=(const RemoteServer&) = delete;

  // From now on calls reach `target`. REQUIRES: at most once.
  void serve(RemoteTarget target);

  // Refuses open requests, disconnects the clients, removes the sockets. The service keeps its
  // observers, since it is about to end; their proxies drop events until the server is destroyed.
  // Idempotent. REQUIRES: the target still lives.
  void stop();

  [[nodiscard]] std::size_t clients() const;

  MessageCodec* getCodec(const std::string& name) override;
  Proxy* createProxy(const std::string& interfaceName, const std::string& address) override;

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace host
