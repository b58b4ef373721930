#pragma once

#include <array>
#include <chrono>
#include <functional>
#include <stop_token>
#include <string>
#include <thread>

#include "base/Descriptor.h"
#include "telephone/HostRequests.h"

namespace panel {

// Follows one running host on a thread of its own: its events and log as they come, its state when
// that may have changed. A host that goes away is looked for until it is back. Owner: the panel.
// Thread: any; the destructor waits for the thread. Failure: told as the state "attached".
class TelephoneWatch {
 public:
  // What the watch found: "status", "keys" and the like with the present value, or "entries" with
  // further events and log lines. Called on the watch's thread.
  using Tell = std::function<void(const std::string& name, const host::Json& value)>;

  TelephoneWatch(HostSockets sockets, Tell tell);
  ~TelephoneWatch();
  TelephoneWatch(const TelephoneWatch&) = delete;
  TelephoneWatch& operator=(const TelephoneWatch&) = delete;

  // The state may have changed: read it soon. Any thread.
  void poke();

 private:
  void run();
  void follow();
  bool wait(std::array<int, 2> others, std::chrono::milliseconds limit);  // true: poked

  const HostSockets m_sockets;
  const Tell m_tell;
  host::Descriptor m_wake;  // eventfd: readable when poked
  std::stop_source m_ending;
  bool m_attached = false;  // used by the thread
  std::thread m_thread;
};

}  // namespace panel
