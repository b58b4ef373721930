#include "conformance/ConnectedPlatform.h"

#include <chrono>
#include <future>
#include <utility>

#include "remote/SocketAddress.h"

namespace host {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kLimit = 20s;  // for what must happen

}  // namespace

ConnectedPlatform::ConnectedPlatform(OpenStores openStores)
    : HostPlatform(openStores),
      m_server(m_loop, ServerSockets{m_socket, controlSocketBeside(m_socket), {}}, {}) {}

ConnectedPlatform::~ConnectedPlatform() {
  m_server.stop();
}

void ConnectedPlatform::serve(Executable& service, Invoker& invoker,
                              std::function<Proxy*()> makeProxy) {
  m_server.serve({service, invoker, std::move(makeProxy)});
}

int ConnectedPlatform::connect() {
  m_clients.emplace_back(m_socket);
  return static_cast<int>(m_clients.size()) - 1;
}

std::optional<Method> ConnectedPlatform::call(int client, Method& request) {
  auto reply = std::async(std::launch::async, [&] { return at(client).call(request, kLimit); });
  while (reply.wait_for(0s) != std::future_status::ready) m_loop.runAllReady();
  return reply.get();
}

std::vector<Method> ConnectedPlatform::events(int client) {
  std::vector<Method> received;
  do {
    while (auto event = at(client).nextEvent(0ms)) received.push_back(*event);
  } while (m_loop.runAllReady() > 0);
  return received;
}

void ConnectedPlatform::disconnect(int client) {
  m_clients.at(static_cast<std::size_t>(client)).reset();
  while (m_loop.runAllReady() > 0) {
  }
}

void ConnectedPlatform::dropService() {
  m_server.stop();
  HostPlatform::dropService();
}

}  // namespace host
