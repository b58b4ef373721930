#include "Line.h"

#include <sched.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "Method.h"
#include "remote/MessagePackCodec.h"
#include "remote/SocketAddress.h"

namespace bench {
namespace {

constexpr std::size_t kLengthSize = 4;

constexpr std::chrono::seconds kAnswerPatience{10};

std::system_error failure(const std::string& what) {
  return {errno, std::generic_category(), what};
}

// A socket that gives up on who does not answer, or does not listen.
host::Descriptor patientSocket() {
  host::Descriptor descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const timeval limit{kAnswerPatience.count(), 0};
  for (const int which : {SO_RCVTIMEO, SO_SNDTIMEO}) {
    if (setsockopt(descriptor.get(), SOL_SOCKET, which, &limit, sizeof limit) != 0) {
      throw failure("socket");
    }
  }
  return descriptor;
}

bool connects(int descriptor, const std::filesystem::path& socket) {
  const host::SocketAddress address(socket);
  if (::connect(descriptor, address.get(), address.size()) == 0) return true;
  if (errno != ENOENT && errno != ECONNREFUSED) throw failure(socket);
  return false;
}

}  // namespace

Line::Line(const std::filesystem::path& socket) : m_descriptor(patientSocket()) {
  if (!connects(m_descriptor.get(), socket)) connect(socket, FolderWatch(socket.parent_path()));
}

Line::Line(const std::filesystem::path& socket, const FolderWatch& watch)
    : m_descriptor(patientSocket()) {
  connect(socket, watch);
}

void Line::connect(const std::filesystem::path& socket, const FolderWatch& watch) const {
  const auto end = std::chrono::steady_clock::now() + kAnswerPatience;
  while (!connects(m_descriptor.get(), socket)) {
    if (std::chrono::steady_clock::now() > end) throw std::runtime_error("nobody listens");
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
    if (got < 0 && errno == EAGAIN) throw std::runtime_error("no answer for ten seconds");
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
  if (length == 0 || length > host::kMaxFrameLength) throw std::runtime_error("this is no frame");
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
