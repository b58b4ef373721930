#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <deque>
#include <mutex>
#include <utility>

#include "host/remote/RawSocket.h"
#include "host/remote/ServerUnderTest.h"

namespace host {

// Keeps control requests until the test answers or drops them. The request "hold" delays the next.
// Thread: any.
class HeldRequests {
 public:
  [[nodiscard]] ControlHandler handler() {
    return [this](ControlRequest request) {
      if (request.text == "hold") request.channel->holdNext();
      const std::lock_guard lock(m_mutex);
      m_requests.push_back(std::move(request));
    };
  }
  [[nodiscard]] std::size_t size() {
    const std::lock_guard lock(m_mutex);
    return m_requests.size();
  }
  [[nodiscard]] ControlRequest take() {
    const std::lock_guard lock(m_mutex);
    ControlRequest request = std::move(m_requests.front());
    m_requests.pop_front();
    return request;
  }
  [[nodiscard]] ControlRequest takeLast() {
    const std::lock_guard lock(m_mutex);
    ControlRequest request = std::move(m_requests.back());
    m_requests.pop_back();
    return request;
  }

 private:
  std::mutex m_mutex;
  std::deque<ControlRequest> m_requests;
};

// A server whose control requests wait for the test.
struct ServerHoldingRequests {
  [[nodiscard]] bool has(std::size_t count) {
    return server.becomes([&] { return requests.size() == count; });
  }

  HeldRequests requests;
  ServerUnderTest server{requests.handler()};
};

// Also has a client that has sent two requests. The server received the first one, which holds back
// the second until it is answered.
struct ServerWithAHeldClient : ServerHoldingRequests {
  ServerWithAHeldClient() {
    client.send(frames(FrameKind::controlRequest, "hold", 1) +
                frames(FrameKind::controlRequest, "next", 1));
    EXPECT_TRUE(has(1));
  }

  RawSocket client{server.controlSocket};
};

}  // namespace host
