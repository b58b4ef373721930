#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>
#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "base/Descriptor.h"
#include "clock/ClockMessage.h"

namespace host::ntp {

// The host's end of the channel. Answers and keeps the requests to set its clock.
class FakeClock {
 public:
  FakeClock() {
    std::array<int, 2> ends{};
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
    m_hosts.reset(ends[0]);
    m_clients.reset(ends[1]);
    EXPECT_EQ(::fcntl(ends[1], F_SETFD, 0), 0);  // programs that the test starts inherit it
    m_thread = std::thread([this] { serve(); });
  }
  ~FakeClock() {
    hangUp();
    m_thread.join();
  }

  void hangUp() { ::shutdown(m_hosts.get(), SHUT_RDWR); }
  [[nodiscard]] int clientsEnd() const { return m_clients.get(); }
  // error: of each answer from now on; -1 closes the channel instead.
  void answerWith(int error) { m_error = error; }
  [[nodiscard]] std::vector<SetClockRequest> requests() {
    const std::lock_guard lock(m_mutex);
    return m_requests;
  }

 private:
  void serve() {
    SetClockRequest request{};
    while (::recv(m_hosts.get(), &request, sizeof request, 0) == sizeof request) {
      {
        const std::lock_guard lock(m_mutex);
        m_requests.push_back(request);
      }
      if (m_error < 0) return hangUp();
      const SetClockAnswer answer{m_error};
      ::send(m_hosts.get(), &answer, sizeof answer, MSG_NOSIGNAL);
    }
  }

  Descriptor m_hosts;
  Descriptor m_clients;
  std::atomic<int> m_error = 0;
  std::mutex m_mutex;  // guards m_requests
  std::vector<SetClockRequest> m_requests;
  std::thread m_thread;
};

}  // namespace host::ntp
