#include "Line.h"

#include <sched.h>
#include <sys/socket.h>

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

constexpr std::size_t kLengthSize = 4;

std::system_error failure(const std::string& what) {
  return {errno, std::generic_category(), what};
}

bool connects(int descriptor, const std::filesystem::path& socket) {
  const host::SocketAddress address(socket);
  if (::connect(descriptor, address.get(), address.size()) == 0) return true;
  if (errno != ENOENT && errno != ECONNREFUSED) throw failure(socket);
  return false;
}

}  // namespace

Line::Line(const std::filesystem::path& socket)
    : m_descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  if (!m_descriptor.valid()) throw failure("socket");
  if (!connects(m_descriptor.get(), socket)) connect(socket, FolderWatch(socket.parent_path()));
}

Line::Line(const std::filesystem::path& socket, const FolderWatch& watch)
    : m_descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  if (!m_descriptor.valid()) throw failure("socket");
  connect(socket, watch);
}

void Line::connect(const std::filesystem::path& socket, const FolderWatch& watch) const {
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
