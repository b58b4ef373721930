#pragma once

namespace host {

// While the object exists, SIGINT and SIGTERM set a flag and make a descriptor readable; the
// destructor restores the former handlers. What follows such a signal in the host:
// EventLoop::run() returns before its next task, main destroys the host's parts in reverse order,
// and Device::stop() ends the service. Owner: a loop; one at a time. Thread: any. Failure: the
// constructor throws Error.
class TerminationSignals {
 public:
  TerminationSignals();
  ~TerminationSignals();
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

  // Whether a signal has arrived since the last call.
  [[nodiscard]] bool take();

  // Readable while a signal is pending. Owned by this object.
  [[nodiscard]] int descriptor() const;
};

}  // namespace host
