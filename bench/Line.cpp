#include "Line.h"

#include <poll.h>
#include <sched.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "Method.h"
#include "remote/MessagePackCodec.h"
#include "remote/SocketAddress.h"

namespace bench {
namespace {

constexpr int kPatience = 10'000;  // ms
constexpr std::size_t kLengthSize = 4;

std::system_error failure(const std::string& what) {
  return {errno, std::generic_category(), what};
}

// Sleeps until there is something new in a folder: who waits must not take the processor from who
// is waited for.
class FolderWatch {
 public:
  explicit FolderWatch(const std::filesystem::path& folder)
      : m_descriptor(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    if (inotify_add_watch(m_descriptor.get(), folder.c_str(), IN_CREATE) < 0) {
      throw failure(folder);
    }
  }

  void wait() const {
    pollfd waited{m_descriptor.get(), POLLIN, 0};
    if (poll(&waited, 1, kPatience) != 1) throw std::runtime_error("nobody came to listen");
    std::array<char, 4096> events;
    while (read(m_descriptor.get(), events.data(), events.size()) > 0) {
    }
  }

 private:
  host::Descriptor m_descriptor;
};

bool connects(int descriptor, const std::filesystem::path& socket) {
  const host::SocketAddress address(socket);
  if (connect(descriptor, address.get(), address.size()) == 0) return true;
  if (errno != ENOENT && errno != ECONNREFUSED) throw failure(socket);
  return false;
}

}  // namespace

Line::Line(const std::filesystem::path& socket)
    : m_descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  if (!m_descriptor.valid()) throw failure("socket");
  if (connects(m_descriptor.get(), socket)) return;
  const FolderWatch watch(socket.parent_path());
  while (!connects(m_descriptor.get(), socket)) {
    // Between bind and listen there is nothing to sleep on.
    errno == ENOENT ? watch.wait() : static_cast<void>(sched_yield());
  }
}

void Line::send(std::string_view bytes) const {
  const ssize_t sent = ::send(m_descriptor.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
  if (sent != static_cast<ssize_t>(bytes.size())) throw failure("send");
}

void Line::takeInto(char* to, std::size_t bytes) const {
  for (std::size_t taken = 0; taken < bytes;) {
    const ssize_t got = recv(m_descriptor.get(), to + taken, bytes - taken, 0);
    if (got < 0) throw failure("recv");
    if (got == 0) throw std::runtime_error("the other side has ended");
    taken += static_cast<std::size_t>(got);
  }
}

void Line::take(std::size_t bytes) const {
  std::array<char, 4096> sink;
  if (bytes > sink.size()) throw std::length_error("more than a usual answer");
  takeInto(sink.data(), bytes);
}

Line::Taken Line::takeFrame() const {
  std::string bytes(kLengthSize, '\0');
  takeInto(bytes.data(), kLengthSize);
  std::size_t length = 0;
  for (const char byte : bytes) length = length << 8 | static_cast<unsigned char>(byte);
  bytes.resize(kLengthSize + length);
  takeInto(bytes.data() + kLengthSize, length);
  return {static_cast<host::FrameKind>(bytes.at(kLengthSize)), bytes};
}

std::string callOf(const char* method) {
  Method request(method, Method::call);
  std::stringstream stream;
  host::MessagePackCodec().encode(request, stream);
  return host::encodeFrame({host::FrameKind::call, 1, stream.view()});
}

std::string controlOf(std::string_view json) {
  return host::encodeFrame({host::FrameKind::controlRequest, 1, json});
}

}  // namespace bench
