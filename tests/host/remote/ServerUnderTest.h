#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <thread>

#include "base/IoLoop.h"
#include "host/remote/FakeDevice.h"
#include "remote/FrameSocket.h"
#include "remote/RemoteClient.h"
#include "remote/RemoteServer.h"
#include "remote/SocketAddress.h"
#include "support/Becomes.h"
#include "support/MethodText.h"
#include "support/TemporaryFolder.h"

namespace host {

inline constexpr std::chrono::milliseconds kLong{10'000};  // limit for what must happen

inline Method echoOf(int number) {
  Method method("echo", Method::call);
  method.addIntParameter("number", number, Parameter::in);
  return method;
}

// The reply as in support/MethodText.h; "no reply" when none comes within kLong.
inline std::string replyTo(RemoteClient& client, Method method) {
  const auto reply = client.call(method, kLong);
  return reply ? support::textOf(*reply) : "no reply";
}
inline bool echoes(RemoteClient& client, int number = 5) {
  return replyTo(client, echoOf(number)) ==
         "reply echo\nout int number=" + std::to_string(number) + '\n';
}

// Whether the service has added the client to its observers, or removed it.
inline bool observe(RemoteClient& client) {
  return replyTo(client, Method("observeTimeEvents", Method::call)) ==
         "reply observeTimeEvents\nout bool observeTimeEventsReturn=true\n";
}
inline bool unobserve(RemoteClient& client) {
  return replyTo(client, Method("unobserveTimeEvents", Method::call)) ==
         "reply unobserveTimeEvents\nout bool unobserveTimeEventsReturn=true\n";
}

// The next frame; empty when none comes within kLong.
inline Frame received(FrameSocket& client) {
  Frame frame;
  EXPECT_TRUE(client.receive(frame, std::chrono::steady_clock::now() + kLong));
  return frame;
}

// A server that serves a fake device, on a loop in a thread of its own.
class ServerUnderTest {
 public:
  explicit ServerUnderTest(RemoteServer::Limits limits)
      : ServerUnderTest(ControlHandler(), limits) {}
  explicit ServerUnderTest(ControlHandler control = {},
                           RemoteServer::Limits limits = RemoteServer::Limits{})
      : socket(m_folder / "host.socket"), controlSocket(controlSocketBeside(socket)) {
    m_server.emplace(m_loop, ServerSockets{socket, controlSocket, {}}, std::move(control), limits);
    device.initInvoker(&*m_server);
    m_server->serve(device.target());
    m_thread = std::thread([this] { m_loop.run(); });
  }
  ~ServerUnderTest() {
    stop();
    m_loop.stop();
    m_thread.join();
    m_server.reset();
  }

  // Runs `task` on the loop and returns its result; at once when called on the loop.
  template <class Task>
  auto onLoop(Task task) {
    if (std::this_thread::get_id() == m_thread.get_id()) return task();
    std::packaged_task<decltype(task())()> packaged(std::move(task));
    auto result = packaged.get_future();
    m_loop.post([&packaged] { packaged(); });
    return result.get();
  }

  void stop() {
    onLoop([this] { m_server->stop(); });
  }
  FrameTap& tap() { return m_server->tap(); }
  std::size_t clients() {
    return onLoop([this] { return m_server->clients(); });
  }

  // Waits until the condition holds on the loop. False when it does not within kLong.
  template <class Condition>
  bool becomes(Condition condition) {
    return support::becomesTrue([&] { return onLoop(condition); }, kLong);
  }

 private:
  const support::TemporaryFolder m_folder;

 public:
  const std::filesystem::path socket;
  const std::filesystem::path controlSocket;
  FakeDevice device;

 private:
  IoLoop m_loop;
  std::optional<RemoteServer> m_server;
  std::thread m_thread;
};

}  // namespace host
