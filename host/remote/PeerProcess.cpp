#include "remote/PeerProcess.h"

namespace host {

std::optional<ucred> processAt(int socket) {
  ucred process{};
  socklen_t size = sizeof process;
  if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &process, &size) != 0) return std::nullopt;
  return process;
}

uid_t userAt(int socket) {
  const auto process = processAt(socket);
  return process ? process->uid : kUnknownUser;
}

}  // namespace host
