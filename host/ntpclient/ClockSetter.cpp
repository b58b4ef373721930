#include "ntpclient/ClockSetter.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include "clock/ClockMessage.h"

namespace host::ntp {
namespace {

using std::chrono::nanoseconds;
using std::chrono::seconds;

constexpr int kAnswerLimit = 5000;  // milliseconds

class HostClock : public ClockSetter {
 public:
  explicit HostClock(Descriptor channel) : m_channel(std::move(channel)) {}

  void set(nanoseconds sinceEpoch) override {
    const auto whole = std::chrono::floor<seconds>(sinceEpoch);
    const SetClockRequest request{whole.count(), (sinceEpoch - whole).count()};
    passOverLateAnswers();
    if (::send(m_channel.get(), &request, sizeof request, MSG_NOSIGNAL | MSG_DONTWAIT) < 0) {
      throw ChannelClosed(std::string("the host is gone: ") + std::strerror(errno));
    }
    const int error = answer();
    if (error != 0) throw Error(std::string("the host refused: ") + std::strerror(error));
  }

 private:
  void passOverLateAnswers() const {
    SetClockAnswer late{};
    while (::recv(m_channel.get(), &late, sizeof late, MSG_DONTWAIT) > 0) continue;
  }

  [[nodiscard]] int answer() const {
    pollfd waited{m_channel.get(), POLLIN, 0};
    if (::poll(&waited, 1, kAnswerLimit) <= 0) throw Error("the host does not answer");
    SetClockAnswer answer{};
    if (::recv(m_channel.get(), &answer, sizeof answer, MSG_DONTWAIT) !=
        static_cast<ssize_t>(sizeof answer)) {
      throw ChannelClosed("the host has closed the channel");
    }
    return answer.error;
  }

  const Descriptor m_channel;
};

}  // namespace

void tellNoFilter(const Descriptor& channel, int error) {
  const NoFilterNotice notice{error};
  static_cast<void>(::send(channel.get(), &notice, sizeof notice, MSG_NOSIGNAL | MSG_DONTWAIT));
}

std::unique_ptr<ClockSetter> makeHostClock(Descriptor channel) {
  return std::make_unique<HostClock>(std::move(channel));
}

}  // namespace host::ntp
