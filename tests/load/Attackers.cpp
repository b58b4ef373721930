#include "load/Attackers.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <array>
#include <chrono>
#include <sstream>

#include "Method.h"
#include "remote/FrameSocket.h"
#include "remote/MessagePackCodec.h"
#include "remote/SocketAddress.h"

namespace load {
namespace {

using host::FrameKind;
using std::chrono::milliseconds;

constexpr milliseconds kSilence{200};  // without room or answer: then an attacker connects again
constexpr milliseconds kEffectLimit{5000};  // for an attacker that reads answers

std::string repeated(FrameKind kind, const std::string& payload, int times) {
  std::string bytes;
  for (int i = 0; i < times; ++i) bytes += host::encodeFrame({kind, 1, payload});
  return bytes;
}

std::string requests(const std::string& json, int times) {
  return repeated(FrameKind::controlRequest, json, times);
}

std::string calls(Method method, int times) {
  std::stringstream stream;
  host::MessagePackCodec().encode(method, stream);
  return repeated(FrameKind::call, stream.str(), times);
}

std::string calls(const char* name, int times) {
  return calls(Method(name, Method::call), times);
}

Method setTimeCall() {
  Method method("setTime", Method::call);
  for (const char* const part : {"setTimeHours", "setTimeMinutes", "setTimeSeconds"}) {
    method.addIntParameter(part, 5, Parameter::in);
  }
  return method;
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
      {"times set", false, calls(setTimeCall(), 3000), 2, false, "setTimeReturn"},  // some 250 kB
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

void limitWaits(int socket, milliseconds toSend, milliseconds toReceive) {
  const auto set = [socket](int option, milliseconds limit) {
    const auto count = limit.count();
    const timeval time{count / 1000, count % 1000 * 1000};
    ::setsockopt(socket, SOL_SOCKET, option, &time, sizeof time);
  };
  set(SO_SNDTIMEO, toSend);
  set(SO_RCVTIMEO, toReceive);
}

// False at the limit, and when the host has disconnected.
bool sendAll(int socket, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

// Whether `part` is in the next bytes to read.
bool receivesPart(int socket, const std::string& part, int flags, ssize_t& got) {
  std::array<char, 65536> bytes;
  got = ::recv(socket, bytes.data(), bytes.size(), flags);
  return got > 0 && std::string_view(bytes.data(), static_cast<std::size_t>(got)).find(part) !=
                        std::string_view::npos;
}

}  // namespace

Attackers::Attackers(const std::filesystem::path& callSocket)
    : m_observers(callSocket, calls("observeTimeEvents", 10), 10, true),
      m_bursts(callSocket, calls("getTime", 50), 50, false) {
  for (const Attack& attack : attacks()) {
    Attacker& attacker = m_attackers.emplace_back(attack);
    const auto socket = attack.control ? host::controlSocketBeside(callSocket) : callSocket;
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
                     {"calls in bursts", m_bursts.replies()}};
  for (const Attacker& attacker : m_attackers) {
    if (!attacker.attack.effect.empty()) effects.emplace_back(attacker.attack.name, attacker.seen);
  }
  return effects;
}

void Attackers::work(Attacker& attacker, const std::filesystem::path& socket) try {
  while (!m_over) {
    const host::FrameSocket client(socket);
    ++m_connections;
    attackOnce(attacker, client.descriptor());
  }
} catch (const host::Error&) {
  // The host has ended.
}

void Attackers::attackOnce(Attacker& attacker, int socket) {
  const Attack& attack = attacker.attack;
  limitWaits(socket, attack.reads ? kEffectLimit : kSilence, kSilence);
  for (int round = 0; round < attack.rounds && !m_over; ++round) {
    if (!sendAll(socket, attack.bytes)) break;
    if (attack.reads) readAnswers(attacker, socket);
  }
  if (attack.reads) return;
  pollfd polled{socket, 0, 0};
  ::poll(&polled, 1, static_cast<int>(kSilence.count()));
  ssize_t got = 0;
  if (receivesPart(socket, attack.effect, MSG_DONTWAIT | MSG_PEEK, got)) ++attacker.seen;
}

// Until nothing more comes, or the limit: an observer may receive events without end.
void Attackers::readAnswers(Attacker& attacker, int socket) {
  const std::string& effect = attacker.attack.effect;
  const auto limit = std::chrono::steady_clock::now() + kEffectLimit;
  bool seen = effect.empty();
  for (ssize_t got = 1; got != 0 && !m_over && std::chrono::steady_clock::now() < limit;) {
    if (receivesPart(socket, effect, 0, got) && !std::exchange(seen, true)) ++attacker.seen;
    if (got < 0 && seen) return;
  }
}

}  // namespace load
