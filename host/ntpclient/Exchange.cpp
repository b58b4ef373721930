#include "ntpclient/Exchange.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sys/random.h>
#include <sys/socket.h>

#include <array>
#include <cstring>
#include <memory>
#include <optional>
#include <set>

#include "base/Descriptor.h"

namespace host::ntp {
namespace {

using Clock = std::chrono::steady_clock;
using Addresses = std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)>;

Addresses resolve(const char* server, int family, const char* port) {
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
  hints.ai_family = family;
  hints.ai_socktype = SOCK_DGRAM;
  addrinfo* found = nullptr;
  if (::getaddrinfo(server, port, &hints, &found) != 0) found = nullptr;
  return {found, &::freeaddrinfo};
}

std::uint64_t makeNonce() {
  std::uint64_t nonce = 0;
  const auto size = static_cast<ssize_t>(sizeof nonce);
  if (::getrandom(&nonce, sizeof nonce, 0) != size || nonce == 0) nonce = 1;
  return nonce;
}

template <class Address>
Address as(const sockaddr_storage& storage) {
  Address address;
  std::memcpy(&address, &storage, sizeof address);
  return address;
}

// Compares address and port only, not flow label and padding.
bool sameSender(const sockaddr_storage& one, const sockaddr_storage& other) {
  if (one.ss_family != other.ss_family) return false;
  if (one.ss_family == AF_INET) {
    const auto a = as<sockaddr_in>(one);
    const auto b = as<sockaddr_in>(other);
    return a.sin_addr.s_addr == b.sin_addr.s_addr && a.sin_port == b.sin_port;
  }
  const auto a = as<sockaddr_in6>(one);
  const auto b = as<sockaddr_in6>(other);
  return std::memcmp(&a.sin6_addr, &b.sin6_addr, sizeof a.sin6_addr) == 0 &&
         a.sin6_port == b.sin6_port;
}

// One request and its answers. Each request has a new socket, and so a new port. The socket is not
// connected, as the kernel would then drop answers from other addresses, which we log.
class Exchange {
 public:
  explicit Exchange(const addrinfo& server)
      : m_socket(::socket(server.ai_family, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)),
        m_nonce(makeNonce()) {
    std::memcpy(&m_server, server.ai_addr, server.ai_addrlen);
    const Packet request = makeRequest(m_nonce);
    m_sentAt = Clock::now();
    m_sent = ::sendto(m_socket.get(), request.data(), request.size(), 0, server.ai_addr,
                      server.ai_addrlen) == static_cast<ssize_t>(request.size());
  }

  [[nodiscard]] bool sent() const { return m_sent; }
  [[nodiscard]] int descriptor() const { return m_socket.get(); }

  // Judges the next datagram; empty when there is none.
  [[nodiscard]] std::optional<Judgement> read() {
    std::array<std::uint8_t, 512> bytes;
    sockaddr_storage sender{};
    socklen_t size = sizeof sender;
    const ssize_t got = ::recvfrom(m_socket.get(), bytes.data(), bytes.size(), 0,
                                   static_cast<sockaddr*>(static_cast<void*>(&sender)), &size);
    m_readAt = Clock::now();
    if (got < 0) return std::nullopt;
    if (!sameSender(sender, m_server)) return Judgement{Verdict::wrongSender, {}, {}};
    return judge(std::span(bytes).first(static_cast<std::size_t>(got)), m_nonce);
  }

  [[nodiscard]] Outcome outcome(const Judgement& judgement) const {
    if (judgement.verdict == Verdict::denied) return {Outcome::Kind::denied};
    if (judgement.verdict == Verdict::rateExceeded) return {Outcome::Kind::rateExceeded};
    return {Outcome::Kind::time, timeAtArrival(judgement, m_readAt - m_sentAt), m_readAt};
  }

 private:
  Descriptor m_socket;
  const std::uint64_t m_nonce;
  sockaddr_storage m_server{};
  Clock::time_point m_sentAt;
  Clock::time_point m_readAt;
  bool m_sent;
};

bool endsExchange(Verdict verdict) {
  return verdict == Verdict::good || verdict == Verdict::denied || verdict == Verdict::rateExceeded;
}

}  // namespace

Outcome ask(const char* server, int family, const char* port, std::chrono::milliseconds limit,
            const ParentWatch& watch, const std::function<void(Verdict)>& refused) {
  const auto deadline = Clock::now() + limit;
  const Addresses addresses = resolve(server, family, port);
  if (!addresses) return {Outcome::Kind::nothing};
  Exchange exchange(*addresses);
  if (!exchange.sent()) return {Outcome::Kind::nothing};
  std::set<Verdict> reported;
  for (;;) {
    switch (watch.wait(deadline, exchange.descriptor())) {
      case ParentWatch::Event::parentGone:
        return {Outcome::Kind::parentGone};
      case ParentWatch::Event::timeout:
        return {Outcome::Kind::nothing};
      case ParentWatch::Event::ready:
        break;
    }
    if (Clock::now() >= deadline) return {Outcome::Kind::nothing};  // a flood is always ready
    const std::optional<Judgement> judgement = exchange.read();
    if (!judgement) continue;
    const Verdict verdict = judgement->verdict;
    if (verdict != Verdict::good && reported.insert(verdict).second) refused(verdict);
    if (endsExchange(verdict)) return exchange.outcome(*judgement);
  }
}

}  // namespace host::ntp
