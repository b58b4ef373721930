#pragma once

#include <poll.h>
#include <sys/socket.h>

#include "base/Descriptor.h"
#include "remote/SocketFile.h"
#include "support/TemporaryFolder.h"
#include "telephone/HostRequests.h"

namespace panel {

// The sockets of a host that is stopped: it answers nothing.
class SilentHost {
 public:
  [[nodiscard]] HostSockets sockets() const {
    return {m_folder.path() / "call", m_folder.path() / "control"};
  }

  // Waits until a client has sent something to the call socket.
  void waitForRequest() {
    waitFor(m_call.descriptor());
    m_client.reset(::accept4(m_call.descriptor(), nullptr, nullptr, SOCK_CLOEXEC));
    waitFor(m_client.get());
  }

 private:
  static void waitFor(int descriptor) {
    pollfd waited{descriptor, POLLIN, 0};
    ::poll(&waited, 1, -1);
  }

  const support::TemporaryFolder m_folder;
  const host::SocketFile m_call{sockets().call};
  const host::SocketFile m_control{sockets().control};
  host::Descriptor m_client;  // stays connected
};

}  // namespace panel
