#include "BlockingClient.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "Method.h"
#include "remote/Frame.h"
#include "remote/MessagePackCodec.h"
#include "remote/SocketAddress.h"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kLengthSize = 4;
constexpr std::chrono::seconds kLimit{10};         // for an answer, and for a server to listen
constexpr std::chrono::microseconds kBetween{50};  // two attempts to connect

std::system_error failure(const std::string& what) {
  return {errno, std::generic_category(), what};
}

host::Descriptor limitedSocket() {
  host::Descriptor descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const timeval limit{kLimit.count(), 0};
  for (const int which : {SO_RCVTIMEO, SO_SNDTIMEO}) {
    if (setsockopt(descriptor.get(), SOL_SOCKET, which, &limit, sizeof limit) != 0) {
      throw failure("socket");
    }
  }
  return descriptor;
}

}  // namespace

BlockingClient::BlockingClient(const std::filesystem::path& socket)
    : m_descriptor(limitedSocket()) {
  const host::SocketAddress address(socket);
  const auto end = Clock::now() + kLimit;
  while (::connect(m_descriptor.get(), address.get(), address.size()) != 0) {
    if (errno != ENOENT && errno != ECONNREFUSED) throw failure(socket);
    if (Clock::now() > end) throw std::runtime_error(socket.string() + ": no server listens");
    std::this_thread::sleep_for(kBetween);
  }
}

void BlockingClient::send(std::string_view bytes) const {
  const ssize_t sent = ::send(m_descriptor.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
  if (sent != static_cast<ssize_t>(bytes.size())) throw failure("send");
}

void BlockingClient::receive(char* to, std::size_t bytes) const {
  for (std::size_t received = 0; received < bytes;) {
    const ssize_t got = recv(m_descriptor.get(), to + received, bytes - received, 0);
    if (got < 0 && errno == EAGAIN) throw std::runtime_error("no answer for ten seconds");
    if (got < 0) throw failure("recv");
    if (got == 0) throw std::runtime_error("the server has disconnected");
    received += static_cast<std::size_t>(got);
  }
}

void BlockingClient::drop(std::size_t bytes) const {
  std::array<char, 4096> sink;
  receive(sink.data(), bytes);
}

std::string BlockingClient::frame() const {
  std::string bytes(kLengthSize, '\0');
  receive(bytes.data(), kLengthSize);
  std::size_t length = 0;
  for (const char byte : bytes) length = length << 8 | static_cast<unsigned char>(byte);
  if (length == 0 || length > host::kMaxFrameLength) throw std::runtime_error("not a frame");
  bytes.resize(kLengthSize + length);
  receive(bytes.data() + kLengthSize, length);
  return bytes;
}

std::string BlockingClient::ask(std::string_view request) const {
  send(request);
  return frame();
}

void BlockingClient::control(std::string_view json) const {
  const std::string reply = ask(controlOf(json)).substr(host::kFrameHeaderSize);
  if (reply.find(R"("ok":true)") == std::string::npos) throw std::runtime_error(reply);
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
