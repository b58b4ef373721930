#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "FrameworkContext.h"
#include "remote/ControlChannel.h"

class Executable;
class Invoker;

namespace asio {
class io_context;
}

namespace host {

// What remote calls reach: one device's service, its invoker, and the factory of observer proxies.
// All of it outlives RemoteServer::stop().
struct RemoteTarget {
  Executable& service;
  Invoker& invoker;
  std::function<Proxy*()> makeProxy;  // a new one; null on failure
};

// Serves any number of clients on a Unix stream socket, and is the invoker's framework: codecs by
// name, observer proxies by peer. Calls run inline on the loop's thread; events may be sent from
// any. Owner: the host's main; after the loop, before the device. Thread: the loop's, except
// FrameworkContext. Failure: a fault in one client costs that client and one log line.
class RemoteServer : public FrameworkContext {
 public:
  struct Limits {
    std::chrono::milliseconds unfinished{
        10000};  // for the rest of a begun frame; for a last answer
  };

  // Takes the socket, mode 0600: a stale one is replaced, one with a live host throws host::Error.
  // Clients may connect from now on; they are answered after serve().
  RemoteServer(asio::io_context& loop, const std::filesystem::path& socket, ControlHandler control);
  RemoteServer(asio::io_context& loop, const std::filesystem::path& socket, ControlHandler control,
               Limits limits);
  virtual ~RemoteServer();
  RemoteServer(const RemoteServer&) = delete;
  RemoteServer& operator=(const RemoteServer&) = delete;

  // From now on calls reach `target`. REQUIRES: at most once.
  void serve(RemoteTarget target);

  // Takes back what clients registered, hangs up, removes the socket. Idempotent. To be called
  // while the target still lives.
  void stop();

  [[nodiscard]] std::size_t clients() const;

  MessageCodec* getCodec(const std::string& name) override;
  Proxy* createProxy(const std::string& interfaceName, const std::string& address) override;

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace host
