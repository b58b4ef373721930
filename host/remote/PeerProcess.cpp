#include "remote/PeerProcess.h"

#include <cstddef>
#include <fstream>
#include <string>

namespace host {

std::optional<ucred> processAt(int socket) {
  ucred process{};
  socklen_t size = sizeof process;
  if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &process, &size) != 0) return std::nullopt;
  return process;
}

// The state is the letter after the name, which is in parentheses and may contain any byte.
std::optional<pid_t> stoppedProcessAt(int socket) {
  const auto process = processAt(socket);
  if (!process) return std::nullopt;
  std::ifstream file("/proc/" + std::to_string(process->pid) + "/stat");
  std::string line;
  std::getline(file, line, '\0');
  const std::size_t name = line.rfind(')');
  if (name == std::string::npos || line.size() < name + 3) return std::nullopt;
  const char state = line[name + 2];
  return state == 'T' || state == 't' ? std::optional(process->pid) : std::nullopt;
}

uid_t userAt(int socket) {
  const auto process = processAt(socket);
  return process ? process->uid : kUnknownUser;
}

}  // namespace host
