#pragma once

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <thread>

#include "host/remote/FakeDevice.h"
#include "remote/RemoteServer.h"
#include "remote/SocketAddress.h"
#include "support/Becomes.h"
#include "support/TemporaryFolder.h"

namespace host {

inline constexpr std::chrono::milliseconds kLong{10'000};  // limit for what must happen

// A server that serves a fake device, on a loop in a thread of its own.
class ServerUnderTest {
 public:
  explicit ServerUnderTest(ControlHandler control = {},
                           RemoteServer::Limits limits = RemoteServer::Limits{})
      : socket(m_folder / "host.socket"),
        controlSocket(controlSocketBeside(socket)),
        m_work(m_loop.get_executor()) {
    m_server.emplace(m_loop, ServerSockets{socket, controlSocket, {}}, std::move(control), limits);
    device.initInvoker(&*m_server);
    m_server->serve(device.target());
    m_thread = std::thread([this] { m_loop.run(); });
  }
  ~ServerUnderTest() {
    stop();
    m_work.reset();
    m_thread.join();
    m_server.reset();
  }

  // Runs `task` on the loop and returns its result; at once when called on the loop.
  template <class Task>
  auto onLoop(Task task) {
    if (std::this_thread::get_id() == m_thread.get_id()) return task();
    std::packaged_task<decltype(task())()> packaged(std::move(task));
    auto result = packaged.get_future();
    asio::post(m_loop, [&packaged] { packaged(); });
    return result.get();
  }

  void stop() {
    onLoop([this] { m_server->stop(); });
  }
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
  asio::io_context m_loop;
  asio::executor_work_guard<asio::io_context::executor_type> m_work;
  std::optional<RemoteServer> m_server;
  std::thread m_thread;
};

}  // namespace host
