#pragma once

#include <poll.h>

#include "remote/SocketFile.h"
#include "support/TemporaryFolder.h"
#include "telephone/HostRequests.h"

namespace panel {

// The sockets of a host that is stopped: it takes no connection, and answers nothing.
class SilentHost {
 public:
  [[nodiscard]] HostSockets sockets() const {
    return {m_folder.path() / "call", m_folder.path() / "control"};
  }

  // Waits until a client has connected to the call socket.
  void waitForClient() const {
    pollfd waited{m_call.descriptor(), POLLIN, 0};
    ::poll(&waited, 1, -1);
  }

 private:
  const support::TemporaryFolder m_folder;
  const host::SocketFile m_call{sockets().call};
  const host::SocketFile m_control{sockets().control};
};

}  // namespace panel
