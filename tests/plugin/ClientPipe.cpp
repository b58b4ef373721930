#include "plugin/ClientPipe.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <sstream>
#include <system_error>

#include "DevicePaths.h"
#include "framework/ProgramMap.h"

namespace plugin {

namespace {

constexpr const char* kName = "clients";
constexpr const char* kEnd = "\n.\n";

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

}  // namespace

ClientPipe::ClientPipe() {
  unlink(kName);
  // Also open for writing, so that there is no end of file between two clients.
  if (mkfifo(kName, 0600) != 0 || (m_pipe = open(kName, O_RDWR | O_CLOEXEC)) < 0)
    throw std::system_error(errno, std::generic_category(), kName);
  host::ProgramMap::instance().set(DevicePaths::kNtpClientProgram, RECORDING_CLIENT);
}

ClientPipe::~ClientPipe() {
  close(m_pipe);
  unlink(kName);
}

bool ClientPipe::readMore() {
  constexpr int kTenSeconds = 10'000;
  pollfd waiting{m_pipe, POLLIN, 0};
  if (poll(&waiting, 1, kTenSeconds) <= 0) return false;
  std::array<char, 1024> bytes{};
  const ssize_t count = read(m_pipe, bytes.data(), bytes.size());
  if (count <= 0) return false;
  m_read.append(bytes.data(), static_cast<std::size_t>(count));
  return true;
}

std::vector<std::string> ClientPipe::next() {
  std::size_t end = 0;
  while ((end = m_read.find(kEnd)) == std::string::npos)
    if (!readMore()) return {};
  auto lines = linesOf(m_read.substr(0, end));
  m_read.erase(0, end + 3);
  return lines;
}

std::string ClientPipe::nextStart() {
  const auto lines = next();
  return !lines.empty() && lines[0].front() == '+' ? lines[0].substr(1) : "";
}

std::string ClientPipe::nextEnd() {
  const auto lines = next();
  return !lines.empty() && lines[0].front() == '-' ? lines[0].substr(1) : "";
}

}  // namespace plugin
