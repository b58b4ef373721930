#pragma once

#include <deque>
#include <functional>
#include <optional>

#include "base/IoLoop.h"
#include "conformance/StoresInFiles.h"
#include "remote/RemoteClient.h"
#include "remote/RemoteServer.h"
#include "support/TemporaryFolder.h"

namespace host {

// The whole host: with its stores in files, and its server of remote calls. The server's loop runs
// on the test's thread, inside the operations that need it.
class ConnectedPlatform : public HostPlatform {
 public:
  explicit ConnectedPlatform(OpenStores openStores = openStoresInFiles);
  ~ConnectedPlatform() override;

  FrameworkContext& remote() override { return m_server; }
  void serve(Executable& service, Invoker& invoker, std::function<Proxy*()> makeProxy) override;
  std::vector<std::string> codecs() override { return CodecTable::names(); }
  int connect() override;
  std::optional<Method> call(int client, Method& request) override;
  std::vector<Method> events(int client) override;
  void disconnect(int client) override;
  void dropService() override;

 private:
  RemoteClient& at(int client) { return *m_clients.at(static_cast<std::size_t>(client)); }

  const support::TemporaryFolder m_sockets;
  const std::filesystem::path m_socket = m_sockets / "host.socket";
  IoLoop m_loop;
  RemoteServer m_server;
  std::deque<std::optional<RemoteClient>> m_clients;
};

}  // namespace host
