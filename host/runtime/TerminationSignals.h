#pragma once

namespace host {

// From construction on SIGINT and SIGTERM are noted and do no more; then the process has its former
// ways again. Owner: the loop, one at a time. Thread: any. Failure: the constructor throws Error.
class TerminationSignals {
 public:
  TerminationSignals();
  ~TerminationSignals();
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

  // Whether one has come since the last time.
  [[nodiscard]] bool take();

  // Can be read from while one has come. Remains this object's.
  [[nodiscard]] int descriptor() const;
};

}  // namespace host
