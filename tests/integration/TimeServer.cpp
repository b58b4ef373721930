#include "integration/TimeServer.h"

#include <pwd.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>

#include "host/ntpclient/FakeSntpServer.h"
#include "ntpclient/Exchange.h"
#include "support/Becomes.h"

namespace integration {
namespace {

std::string userName() {
  const passwd* const user = ::getpwuid(::getuid());  // NOLINT(concurrency-mt-unsafe)
  return user != nullptr ? user->pw_name : "root";
}

}  // namespace

// The port is free again once the fake server has closed its socket.
TimeServer::TimeServer(const std::filesystem::path& folder)
    : m_port(host::ntp::FakeSntpServer().port()) {
  const std::filesystem::path settings = folder / "chrony.conf";
  std::ofstream(settings) << "local stratum 1\nallow 127.0.0.1\nbindaddress 127.0.0.1\ncmdport 0\n"
                          << "port " << m_port << "\npidfile " << (folder / "chrony.pid").string()
                          << "\n";
  m_program = std::make_unique<Program>(
      folder, "chronyd",
      Words{CLOCK_CHRONYD, "-x", "-d", "-U", "-u", userName(), "-f", settings.string()});
  if (!support::becomesTrue([this] { return answers(); })) {
    throw std::runtime_error("chronyd does not answer: " + m_program->err());
  }
}

bool TimeServer::answers() const {
  const host::ntp::ParentWatch watch;
  const auto outcome = host::ntp::ask("127.0.0.1", AF_INET, m_port.c_str(),
                                      std::chrono::milliseconds(100), watch, [](auto) {});
  return outcome.kind == host::ntp::Outcome::Kind::time;
}

}  // namespace integration
