#pragma once

#include <string>

#include "base/Descriptor.h"

namespace host {

// Notifies the program that started the host when it answers: at a descriptor, and as a service
// manager expects it ($NOTIFY_SOCKET). Owner: its creator. Thread: one. Failure: a notice that
// cannot be sent is one line in the log.
class Readiness {
 public:
  // descriptor: as in requireWritable, or -1 for none; this object closes it. Removes
  // $NOTIFY_SOCKET from the environment, so that no child notifies in its place. REQUIRES: no other
  // thread runs.
  explicit Readiness(int descriptor);

  // The host answers: writes a newline and closes the descriptor. Called once.
  void ready();

  // The host begins to end.
  void stopping() const;

 private:
  void notify(const char* state) const;

  Descriptor m_descriptor;
  std::string m_manager;  // "/PATH" or "@ABSTRACT"; empty: none
};

// What is wrong with a descriptor that was inherited for a Readiness; empty for nothing.
[[nodiscard]] std::string checkReadyDescriptor(int descriptor);

}  // namespace host
