#include "runtime/ClockChannel.h"

#include <sys/socket.h>

#include <array>
#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/post.hpp>
#include <cerrno>
#include <chrono>
#include <memory>

#include "Logging.h"
#include "clock/VirtualClock.h"

namespace host {
namespace {

using std::chrono::nanoseconds;
using std::chrono::seconds;

bool isAllowed(const SetClockRequest& request) {
  constexpr auto kLast = std::chrono::floor<seconds>(VirtualClock::kLastWall).count();
  return request.seconds >= 0 && request.seconds < kLast && request.nanoseconds >= 0 &&
         request.nanoseconds < 1'000'000'000;
}

// The host's end. It lives as long as the loop waits for the client.
class ClockChannel : public std::enable_shared_from_this<ClockChannel> {
 public:
  ClockChannel(asio::io_context& loop, Descriptor end, VirtualClock& clock)
      : m_end(loop, end.release()), m_clock(clock) {}

  void wait() {
    m_end.async_wait(asio::posix::descriptor_base::wait_read,
                     [self = shared_from_this()](const asio::error_code& error) {
                       if (!error && self->serve()) self->wait();
                     });
  }

 private:
  // False: the channel has ended.
  bool serve() {
    SetClockRequest request{};
    const ssize_t size = ::recv(m_end.native_handle(), &request, sizeof request,
                                MSG_DONTWAIT | MSG_TRUNC);  // the size as it was sent
    if (size < 0) return errno == EAGAIN || errno == EINTR;
    if (size == 0) return false;
    if (size != static_cast<ssize_t>(sizeof request) || !isAllowed(request)) {
      logAppUni("clockhost", 3, __FILE__, __LINE__,
                "the NTP client's channel is closed: it sent what sets no clock");
      return false;
    }
    return answer(set(request));
  }

  // 0, or why not.
  int set(const SetClockRequest& request) {
    return m_clock.setWall(seconds(request.seconds) + nanoseconds(request.nanoseconds)) ? 0 : errno;
  }

  // A client that does not read its answers has no use for a clock.
  bool answer(int error) {
    const SetClockAnswer answer{error};
    return ::send(m_end.native_handle(), &answer, sizeof answer, MSG_DONTWAIT | MSG_NOSIGNAL) ==
           static_cast<ssize_t>(sizeof answer);
  }

  asio::posix::stream_descriptor m_end;
  VirtualClock& m_clock;
};

}  // namespace

Descriptor openClockChannel(asio::io_context& loop, VirtualClock& clock) {
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) return {};
  Descriptor clients(ends[0]);
  const auto hosts = std::make_shared<Descriptor>(ends[1]);
  asio::post(loop, [&loop, &clock, hosts] {
    std::make_shared<ClockChannel>(loop, std::move(*hosts), clock)->wait();
  });
  return clients;
}

}  // namespace host
