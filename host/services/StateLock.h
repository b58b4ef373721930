#pragma once

#include <filesystem>

#include "remote/Descriptor.h"

namespace host {

// The state folder, for one host alone as long as this lives; the system takes the lock back from a
// host that is killed. A missing folder is made, for its owner only. One that is the host's own
// (empty but for a lock, or with its settings) and open to others is closed to them, with one log
// line; any other one is left as it is, and told. Owner: the device, before all that is kept in the
// folder. Failure: the constructor throws host::Error.
class StateLock {
 public:
  static constexpr const char* kFileName = "lock";  // stays behind: it is the lock that counts

  explicit StateLock(const std::filesystem::path& folder);

 private:
  Descriptor m_file;
};

}  // namespace host
