#include "load/Attackers.h"

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <sstream>
#include <vector>

#include "Method.h"
#include "remote/Descriptor.h"
#include "remote/Frame.h"
#include "remote/MessagePackCodec.h"
#include "remote/SocketAddress.h"

namespace load {
namespace {

using host::FrameKind;

constexpr int kPatience = 200;  // milliseconds without room or answer, then an attacker comes anew

std::string repeated(FrameKind kind, const std::string& payload, int times) {
  std::string bytes;
  for (int i = 0; i < times; ++i) bytes += host::encodeFrame({kind, 1, payload});
  return bytes;
}

std::string requests(const std::string& json, int times) {
  return repeated(FrameKind::controlRequest, json, times);
}

std::string calls(const char* name, int times) {
  Method method(name, Method::call);
  for (const char* const part : {"setTimeHours", "setTimeMinutes", "setTimeSeconds"}) {
    if (name == std::string("setTime")) method.addIntParameter(part, 5, Parameter::in);
  }
  std::stringstream stream;
  host::MessagePackCodec().encode(method, stream);
  return repeated(FrameKind::call, stream.str(), times);
}

std::string requestOfManyMembers() {
  std::string json = R"({"verb":"status")";
  for (int i = 0; i < 70'000; ++i) json += ",\"" + std::to_string(i) + "\":0";
  return requests(json + "}", 1);
}

std::vector<Attack> attacks() {
  std::vector<Attack> all = {
      {true, requestOfManyMembers(), 20, true},
      {false, calls("setTime", 3000), 2, false},  // some 250 kB
      {true, requests(R"({"verb":"set","key":"date-format","value":"1"})", 20'000), 1, false},
      {false, calls("observeTimeEvents", 10'000), 40, true},
      {true, requests(R"({"verb":"clock","action":"advance","seconds":3155760000})", 1), 1, true},
  };
  all.resize(all.size() + 8, {true, requests(R"({"verb":"security-log"})", 500), 2, false});
  return all;
}

bool waitFor(int socket, short events) {
  pollfd waited{socket, events, 0};
  return ::poll(&waited, 1, kPatience) == 1;
}

// False: there was no room for some time, or the host has hung up.
bool sendAll(int socket, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (sent > 0) bytes.remove_prefix(static_cast<std::size_t>(sent));
    if (sent < 0 && (errno != EAGAIN || !waitFor(socket, POLLOUT))) return false;
  }
  return true;
}

void readWhatComes(int socket) {
  std::array<char, 65536> bytes;
  while (waitFor(socket, POLLIN) && ::recv(socket, bytes.data(), bytes.size(), MSG_DONTWAIT) > 0) {
    if (!waitFor(socket, POLLOUT)) return;
  }
}

}  // namespace

Attackers::Attackers(const std::filesystem::path& socket) {
  for (const Attack& attack : attacks()) {
    m_threads.emplace_back([this, attack, socket] { work(attack, socket); });
  }
}

Attackers::~Attackers() {
  m_over = true;
  for (std::thread& thread : m_threads) thread.join();
}

void Attackers::work(const Attack& attack, const std::filesystem::path& socket) {
  const auto path = attack.control ? host::controlSocketBeside(socket) : socket;
  while (!m_over) live(attack, path);
}

void Attackers::live(const Attack& attack, const std::filesystem::path& socket) {
  const host::Descriptor client(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const host::SocketAddress address(socket);
  if (::connect(client.get(), address.get(), address.size()) != 0) {
    m_over = true;  // the host has ended
    return;
  }
  ++m_connections;
  for (int round = 0; round < attack.rounds && !m_over; ++round) {
    if (!sendAll(client.get(), attack.bytes)) break;
    if (attack.reads) readWhatComes(client.get());
  }
  if (!attack.reads) static_cast<void>(waitFor(client.get(), POLLHUP));
}

}  // namespace load
