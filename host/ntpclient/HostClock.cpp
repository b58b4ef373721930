#include "ntpclient/HostClock.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "clock/ClockMessage.h"

namespace host::ntp {
namespace {

constexpr int kAnswerLimit = 5000;  // milliseconds

template <class Message>
bool send(const Descriptor& channel, const Message& message) {
  return ::send(channel.get(), &message, sizeof message, MSG_NOSIGNAL | MSG_DONTWAIT) >= 0;
}

void discardLateAnswers(const Descriptor& channel) {
  SetClockAnswer late{};
  while (::recv(channel.get(), &late, sizeof late, MSG_DONTWAIT) > 0) continue;
}

}  // namespace

void HostClock::set(std::chrono::nanoseconds sinceEpoch) const {
  const auto whole = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
  discardLateAnswers(m_channel);
  if (!send(m_channel, SetClockRequest{whole.count(), (sinceEpoch - whole).count()})) {
    throw ChannelClosed(std::string("the host is gone: ") + std::strerror(errno));
  }
  const int error = receiveAnswer();
  if (error != 0) throw Error(std::string("the host refused: ") + std::strerror(error));
}

void HostClock::reportMissingFilter(int error) const {
  static_cast<void>(send(m_channel, NoFilterNotice{error}));
}

int HostClock::receiveAnswer() const {
  pollfd waiting{m_channel.get(), POLLIN, 0};
  if (::poll(&waiting, 1, kAnswerLimit) <= 0) throw Error("the host does not answer");
  SetClockAnswer answer{};
  if (::recv(m_channel.get(), &answer, sizeof answer, MSG_DONTWAIT) !=
      static_cast<ssize_t>(sizeof answer)) {
    throw ChannelClosed("the host has closed the channel");
  }
  return answer.error;
}

}  // namespace host::ntp
