#include "remote/Acceptor.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <string>
#include <utility>

#include "Logging.h"
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

Acceptor::Acceptor(asio::io_context& loop, int listener, std::function<void(Socket)> accepted)
    : m_loop(loop),
      m_acceptor(loop),
      m_pause(loop),
      m_accepted(std::move(accepted)),
      m_spare(spareDescriptor()),
      m_alive(std::make_shared<bool>(true)),
      m_waitMemory(std::make_shared<WaitMemory>()) {
  m_acceptor.assign(asio::local::stream_protocol(), listener);
  wait();
}

Acceptor::~Acceptor() {
  *m_alive = false;
  asio::error_code ignored;
  static_cast<void>(m_acceptor.release(ignored));
}

void Acceptor::wait() {
  m_acceptor.async_wait(asio::socket_base::wait_read,
                        WaitHandler{m_waitMemory, [this, alive = m_alive](const auto& error) {
                                      if (*alive && !error) acceptWaiting();
                                    }});
}

// Waits again after any exception, for instance without memory for the pause.
void Acceptor::acceptWaiting() try {
  const int error = acceptSome();
  if (error == 0) return wait();
  logAppUni("clockhost", 2, __FILE__, __LINE__, "cannot accept clients for a moment: %s",
            std::strerror(error));
  pause();
} catch (const std::exception&) {
  wait();
}

int Acceptor::acceptSome() {
  for (int accepted = 0; accepted < kMostAtOnce; ++accepted) {
    const int client =
        ::accept4(m_acceptor.native_handle(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
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

void Acceptor::pause() {
  m_pause.expires_after(kPause);
  m_pause.async_wait(WaitHandler{m_waitMemory, [this, alive = m_alive](const auto& failed) {
                                   if (*alive && !failed) wait();
                                 }});
}

void Acceptor::handOver(Descriptor client) try {
  Socket socket(m_loop, asio::local::stream_protocol(), client.get());
  static_cast<void>(client.release());
  m_accepted(std::move(socket));
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
  Descriptor client(::accept4(m_acceptor.native_handle(), nullptr, nullptr, SOCK_CLOEXEC));
  const int error = client.valid() ? 0 : errno;
  if (client.valid()) refuse(client.get(), kNoDescriptor);
  client.reset();
  m_spare = spareDescriptor();
  if (error == 0) m_turnedAway.log(kNoDescriptor);
  return error;
}

}  // namespace host
