#include "runtime/ClockChannel.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <utility>

#include "Logging.h"
#include "base/IoLoop.h"
#include "base/LogLevels.h"
#include "base/Origin.h"
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

// The host's end, which the loop owns.
class ClockChannel {
 public:
  ClockChannel(int end, VirtualClock& clock, std::atomic<bool>& filterMissed)
      : m_end(end), m_clock(clock), m_filterMissed(filterMissed) {}

  // Handles one message. False: the channel is to be closed.
  [[nodiscard]] bool serve() const {
    SetClockRequest request{};
    const ssize_t size = ::recv(m_end, &request, sizeof request,
                                MSG_DONTWAIT | MSG_TRUNC);  // the whole message's size
    if (size < 0) return errno == EAGAIN || errno == EINTR;
    if (size == 0) return false;
    NoFilterNotice notice{};
    std::memcpy(&notice, &request, sizeof notice);
    if (size == static_cast<ssize_t>(sizeof notice) && notice.error > 0)
      return logMissingFilter(notice);
    if (size != static_cast<ssize_t>(sizeof request) || !isAllowed(request)) {
      logAppUni("clockhost", kLogWarning, __FILE__, __LINE__,
                "the NTP client's channel is closed: it sent an invalid message");
      return false;
    }
    return answer(set(request));
  }

 private:
  // Once for all clients, because the service restarts its NTP client every hour.
  [[nodiscard]] bool logMissingFilter(const NoFilterNotice& notice) const {
    if (!m_filterMissed.exchange(true)) {
      logAppUni("clockhost", kLogWarning, __FILE__, __LINE__,
                "the NTP client runs without a system call filter: %s",
                std::strerror(notice.error));
    }
    return true;
  }

  // Returns 0 or an errno.
  [[nodiscard]] int set(const SetClockRequest& request) const {
    const nanoseconds wall = seconds(request.seconds) + nanoseconds(request.nanoseconds);
    const CauseScope cause({"time server", {}});
    return m_clock.setWall(wall, VirtualClock::Setter::timeServer) ? 0 : errno;
  }

  // False when the answer cannot be sent, also to a client that does not read its answers.
  [[nodiscard]] bool answer(int error) const {
    const SetClockAnswer answer{error};
    return ::send(m_end, &answer, sizeof answer, MSG_DONTWAIT | MSG_NOSIGNAL) ==
           static_cast<ssize_t>(sizeof answer);
  }

  const int m_end;
  VirtualClock& m_clock;
  std::atomic<bool>& m_filterMissed;
};

// On the loop: serves the host's end, or closes it.
void serveOrClose(IoLoop& loop, Descriptor end, VirtualClock& clock,
                  std::atomic<bool>& filterMissed) try {
  const ClockChannel channel(end.get(), clock, filterMissed);
  loop.watchUntilDone(std::move(end), [channel] { return channel.serve(); });
} catch (const std::exception& error) {
  logAppUni("clockhost", kLogWarning, __FILE__, __LINE__, "the NTP client's channel is closed: %s",
            error.what());
}

}  // namespace

Descriptor openClockChannel(IoLoop& loop, VirtualClock& clock,
                            std::atomic<bool>& filterMissed) try {
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) return {};
  Descriptor clients(ends[0]);
  Descriptor own(ends[1]);
  const auto hosts = std::make_shared<Descriptor>(std::move(own));
  loop.post([&loop, &clock, &filterMissed, hosts] {
    serveOrClose(loop, std::move(*hosts), clock, filterMissed);
  });
  return clients;
} catch (const std::bad_alloc&) {
  errno = ENOMEM;
  return {};
}

}  // namespace host
