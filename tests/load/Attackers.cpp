#include "load/Attackers.h"

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <sstream>
#include <vector>

#include "Method.h"
#include "base/Descriptor.h"
#include "remote/Frame.h"
#include "remote/MessagePackCodec.h"
#include "remote/SocketAddress.h"

namespace load {
namespace {

using host::FrameKind;

constexpr int kPatience = 200;  // milliseconds without room or answer, then an attacker comes anew

constexpr int kPatienceForAnAnswer = 5000;

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

std::string setOf(const std::string& key, const std::string& value) {
  return R"({"verb":"set","key":")" + key + R"(","value":")" + value + R"("})";
}

std::vector<Attack> attacks() {
  constexpr const char* kDone = R"("ok":true)";
  std::vector<Attack> all = {
      {"requests of many members, refused", true, requestOfManyMembers(), 20, true,
       "members and values"},
      {"times set", false, calls("setTime", 3000), 2, false, "setTimeReturn"},  // some 250 kB
      {"sets", true, requests(setOf("date-format", "2"), 20'000), 1, false, kDone},
      {"lookups", true, requests(setOf("sntp-addr", kSilentName), 10), 1, true, kDone},
      {"registrations of one client", false, calls("observeTimeEvents", 500), 800, true,
       "observeTimeEventsReturn"},
      {"advances", true, requests(R"({"verb":"clock","action":"advance","seconds":3155760000})", 1),
       1, true, ""},
  };
  all.resize(all.size() + 8, {"security logs", true, requests(R"({"verb":"security-log"})", 500), 2,
                              false, R"("records")"});
  return all;
}

bool waitFor(int socket, short events, int patience = kPatience) {
  pollfd waited{socket, events, 0};
  return ::poll(&waited, 1, patience) == 1;
}

// False: there was no room for some time, or the host has hung up.
bool sendAll(int socket, std::string_view bytes, int patience) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (sent > 0) bytes.remove_prefix(static_cast<std::size_t>(sent));
    if (sent < 0 && (errno != EAGAIN || !waitFor(socket, POLLOUT, patience))) {
      return false;
    }
  }
  return true;
}

// Counts in `met` when `part` is in what comes; events may come without end.
void readWhatComes(int socket, const std::string& part, std::atomic<std::uint64_t>& met) {
  std::array<char, 65536> bytes;
  ssize_t got = 0;
  bool found = part.empty();
  // Who expects an answer waits for it among all the others.
  while (waitFor(socket, POLLIN, found ? kPatience : kPatienceForAnAnswer) &&
         (got = ::recv(socket, bytes.data(), bytes.size(), MSG_DONTWAIT)) > 0) {
    const std::string_view text(bytes.data(), static_cast<std::size_t>(got));
    if (!found && text.find(part) != std::string_view::npos) {
      found = true;
      ++met;
    }
    if (!waitFor(socket, POLLOUT)) return;
  }
}

// Whether `part` is at the beginning of what is there to be read; it stays there.
bool seesWhatWaits(int socket, const std::string& part) {
  std::array<char, 65536> bytes;
  const ssize_t got = ::recv(socket, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_PEEK);
  return got > 0 && std::string_view(bytes.data(), static_cast<std::size_t>(got)).find(part) !=
                        std::string_view::npos;
}

}  // namespace

Attackers::Attackers(const std::filesystem::path& socket)
    : m_observers(socket, calls("observeTimeEvents", 10), 10, true),
      m_bursters(socket, calls("getTime", 50), 50, false) {
  for (const Attack& attack : attacks()) {
    Attacker& attacker = m_attackers.emplace_back(attack);
    attacker.thread = std::thread([this, &attacker, socket] { work(attacker, socket); });
  }
}

Attackers::~Attackers() {
  m_over = true;
  for (Attacker& attacker : m_attackers) attacker.thread.join();
}

Effects Attackers::effects() const {
  Effects effects = {{"registrations of the crowd", m_observers.accepted()},
                     {"registrations refused", m_observers.refused()},
                     {"calls in bursts", m_bursters.replies()}};
  for (const Attacker& attacker : m_attackers) {
    const bool counted = *attacker.attack.expects != '\0';
    if (counted) effects.push_back({attacker.attack.name, attacker.met});
  }
  return effects;
}

void Attackers::work(Attacker& attacker, const std::filesystem::path& socket) {
  const auto path = attacker.attack.control ? host::controlSocketBeside(socket) : socket;
  while (!m_over) live(attacker, path);
}

void Attackers::live(Attacker& attacker, const std::filesystem::path& socket) {
  const Attack& attack = attacker.attack;
  const host::Descriptor client(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const host::SocketAddress address(socket);
  if (::connect(client.get(), address.get(), address.size()) != 0) {
    m_over = true;  // the host has ended
    return;
  }
  ++m_connections;
  for (int round = 0; round < attack.rounds && !m_over; ++round) {
    if (!sendAll(client.get(), attack.bytes, attack.reads ? kPatienceForAnAnswer : kPatience))
      break;
    if (attack.reads) readWhatComes(client.get(), attack.expects, attacker.met);
  }
  if (!attack.reads) {
    static_cast<void>(waitFor(client.get(), POLLHUP));
    if (seesWhatWaits(client.get(), attack.expects)) ++attacker.met;
  }
}

}  // namespace load
