#include "integration/TimeServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <pwd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <fstream>
#include <stdexcept>

#include "support/Becomes.h"

namespace integration {
namespace {

namespace fs = std::filesystem;

// A datagram socket on the loopback interface. Owner: its creator.
class LoopbackSocket {
 public:
  LoopbackSocket() : m_number(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}
  ~LoopbackSocket() { ::close(m_number); }
  LoopbackSocket(const LoopbackSocket&) = delete;
  LoopbackSocket& operator=(const LoopbackSocket&) = delete;
  [[nodiscard]] int number() const { return m_number; }

 private:
  int m_number;
};

sockaddr_in loopback(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

std::uint16_t freePort() {
  const LoopbackSocket socket;
  sockaddr_in address = loopback(0);
  socklen_t size = sizeof address;
  auto* const any = reinterpret_cast<sockaddr*>(&address);
  if (::bind(socket.number(), any, size) != 0 || ::getsockname(socket.number(), any, &size) != 0)
    throw std::runtime_error("no free port on the loopback interface");
  return ntohs(address.sin_port);
}

bool answers(std::uint16_t port) {
  const LoopbackSocket socket;
  const sockaddr_in address = loopback(port);
  const std::array<unsigned char, 48> request{0x23};  // version 4, client: RFC 4330, section 4
  ::sendto(socket.number(), request.data(), request.size(), 0,
           reinterpret_cast<const sockaddr*>(&address), sizeof address);
  pollfd waiting{socket.number(), POLLIN, 0};
  std::array<char, 128> answer{};
  return ::poll(&waiting, 1, 100) == 1 &&
         ::recv(socket.number(), answer.data(), answer.size(), 0) == 48;
}

std::string userName() {
  const passwd* const user = ::getpwuid(::getuid());  // NOLINT(concurrency-mt-unsafe)
  return user != nullptr ? user->pw_name : "root";
}

}  // namespace

std::string TimeServer::missing() {
  return fs::exists(CLOCK_CHRONYD) ? std::string() : std::string("no ") + CLOCK_CHRONYD;
}

TimeServer::TimeServer(const fs::path& folder) : m_port(freePort()) {
  const fs::path settings = folder / "chrony.conf";
  std::ofstream(settings) << "local stratum 1\nallow 127.0.0.1\nbindaddress 127.0.0.1\ncmdport 0\n"
                          << "port " << m_port << "\npidfile " << (folder / "chrony.pid").string()
                          << "\n";
  m_program = std::make_unique<Program>(
      folder, "chronyd",
      Words{CLOCK_CHRONYD, "-x", "-d", "-U", "-u", userName(), "-f", settings.string()});
  waitUntilItAnswers();
}

void TimeServer::waitUntilItAnswers() const {
  if (!support::becomesTrue([this] { return answers(m_port); }))
    throw std::runtime_error("chronyd does not answer: " + m_program->err());
}

}  // namespace integration
