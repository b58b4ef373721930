#include "remote/Acceptor.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <string>
#include <utility>

#include "Logging.h"
#include "base/LogLevels.h"
#include "remote/Frame.h"

namespace host {
namespace {

constexpr int kMostAtOnce = 16;  // clients; then the connected clients get a turn
constexpr std::chrono::milliseconds kPause{100};

constexpr const char* kNoDescriptor = "no file descriptor is left";

Descriptor spareDescriptor() {
  return Descriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC));
}

bool concernsOneClient(int error) {
  return error == EINTR || error == ECONNABORTED || error == EPROTO;
}

bool isShortage(int error) {
  return error == EMFILE || error == ENFILE;
}

}  // namespace

Acceptor::Acceptor(IoLoop& loop, int listener, std::function<void(Descriptor)> accepted)
    : m_listener(listener),
      m_accepted(std::move(accepted)),
      m_spare(spareDescriptor()),
      m_pause(loop, [this] { m_watch.await(EPOLLIN); }),
      m_watch(loop, listener, EPOLLIN, [this](std::uint32_t) { acceptWaiting(); }) {}

void Acceptor::acceptWaiting() {
  const int error = acceptSome();
  if (error == 0) return;
  m_watch.await(0);
  m_pause.start(kPause);
  logAppUni("clockhost", kLogError, __FILE__, __LINE__, "cannot accept clients for a moment: %s",
            std::strerror(error));
}

int Acceptor::acceptSome() {
  for (int accepted = 0; accepted < kMostAtOnce; ++accepted) {
    const int client = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (client >= 0) {
      handOver(Descriptor(client));
      continue;
    }
    int error = errno;
    if (isShortage(error)) error = turnAway();
    if (error == EAGAIN) return 0;  // the backlog is empty
    if (error != 0 && !concernsOneClient(error)) return error;
  }
  return 0;
}

void Acceptor::handOver(Descriptor client) try {
  m_accepted(std::move(client));
} catch (const std::exception& error) {
  m_turnedAway.log(error.what());
}

void Acceptor::refuse(int client, std::string_view why) noexcept try {
  const std::string json = R"({"ok":false,"error":")" + std::string(why) + R"(; try again later"})";
  const std::string frame = encodeFrame({FrameKind::controlReply, 0, json});
  static_cast<void>(::send(client, frame.data(), frame.size(), MSG_DONTWAIT | MSG_NOSIGNAL));
} catch (const std::exception&) {
  // No memory for the reason: the client is only disconnected.
}

// Accepts a client with the spare descriptor and disconnects it: in the backlog it would wake the
// loop forever. Returns 0, or the error of accept: EMFILE hides that the backlog is empty
// (EAGAIN).
int Acceptor::turnAway() {
  if (!m_spare.valid()) return EMFILE;
  m_spare.reset();
  Descriptor client(::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC));
  const int error = client.valid() ? 0 : errno;
  if (client.valid()) refuse(client.get(), kNoDescriptor);
  client.reset();
  m_spare = spareDescriptor();
  if (error == 0) m_turnedAway.log(kNoDescriptor);
  return error;
}

}  // namespace host
