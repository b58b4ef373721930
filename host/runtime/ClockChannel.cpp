#include "runtime/ClockChannel.h"

#include <sys/socket.h>

#include <array>
#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/post.hpp>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <utility>

#include "Logging.h"
#include "base/WaitMemory.h"
#include "clock/VirtualClock.h"

namespace host {
namespace {

using std::chrono::nanoseconds;
using std::chrono::seconds;

using Stream = asio::posix::stream_descriptor;

bool isAllowed(const SetClockRequest& request) {
  constexpr auto kLast = std::chrono::floor<seconds>(VirtualClock::kLastWall).count();
  return request.seconds >= 0 && request.seconds < kLast && request.nanoseconds >= 0 &&
         request.nanoseconds < 1'000'000'000;
}

// The host's end. The loop's pending wait owns it.
class ClockChannel : public std::enable_shared_from_this<ClockChannel> {
 public:
  ClockChannel(Stream end, VirtualClock& clock, std::atomic<bool>& filterMissed)
      : m_end(std::move(end)), m_clock(clock), m_filterMissed(filterMissed) {}

  void wait() {
    m_end.async_wait(Stream::wait_read,
                     WaitHandler{m_waitMemory, [self = shared_from_this()](const auto& error) {
                                   if (!error && self->serve()) self->wait();
                                 }});
  }

 private:
  // Handles one message. False: the channel is to be closed.
  bool serve() {
    SetClockRequest request{};
    const ssize_t size = ::recv(m_end.native_handle(), &request, sizeof request,
                                MSG_DONTWAIT | MSG_TRUNC);  // the whole message's size
    if (size < 0) return errno == EAGAIN || errno == EINTR;
    if (size == 0) return false;
    NoFilterNotice notice{};
    std::memcpy(&notice, &request, sizeof notice);
    if (size == static_cast<ssize_t>(sizeof notice) && notice.error > 0)
      return logMissingFilter(notice);
    if (size != static_cast<ssize_t>(sizeof request) || !isAllowed(request)) {
      logAppUni("clockhost", 3, __FILE__, __LINE__,
                "the NTP client's channel is closed: it sent an invalid message");
      return false;
    }
    return answer(set(request));
  }

  // Once for all clients, because the service restarts its NTP client every hour.
  bool logMissingFilter(const NoFilterNotice& notice) {
    if (!m_filterMissed.exchange(true)) {
      logAppUni("clockhost", 3, __FILE__, __LINE__,
                "the NTP client runs without a system call filter: %s",
                std::strerror(notice.error));
    }
    return true;
  }

  // Returns 0 or an errno.
  int set(const SetClockRequest& request) {
    return m_clock.setWall(seconds(request.seconds) + nanoseconds(request.nanoseconds)) ? 0 : errno;
  }

  // False when the answer cannot be sent, also to a client that does not read its answers.
  bool answer(int error) {
    const SetClockAnswer answer{error};
    return ::send(m_end.native_handle(), &answer, sizeof answer, MSG_DONTWAIT | MSG_NOSIGNAL) ==
           static_cast<ssize_t>(sizeof answer);
  }

  Stream m_end;
  VirtualClock& m_clock;
  std::atomic<bool>& m_filterMissed;
  const std::shared_ptr<WaitMemory> m_waitMemory = std::make_shared<WaitMemory>();
};

// On the loop: serves the host's end, or closes it.
void serveOrClose(asio::io_context& loop, Descriptor& end, VirtualClock& clock,
                  std::atomic<bool>& filterMissed) try {
  Stream stream(loop, end.get());
  static_cast<void>(end.release());
  std::make_shared<ClockChannel>(std::move(stream), clock, filterMissed)->wait();
} catch (const std::exception& error) {
  end.reset();
  logAppUni("clockhost", 3, __FILE__, __LINE__, "the NTP client's channel is closed: %s",
            error.what());
}

}  // namespace

Descriptor openClockChannel(asio::io_context& loop, VirtualClock& clock,
                            std::atomic<bool>& filterMissed) try {
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) return {};
  Descriptor clients(ends[0]);
  Descriptor own(ends[1]);
  const auto hosts = std::make_shared<Descriptor>(std::move(own));
  asio::post(loop, [&loop, &clock, &filterMissed, hosts] {
    serveOrClose(loop, *hosts, clock, filterMissed);
  });
  return clients;
} catch (const std::bad_alloc&) {
  errno = ENOMEM;
  return {};
}

}  // namespace host
