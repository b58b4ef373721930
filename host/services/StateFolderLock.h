#pragma once

#include <filesystem>

#include "base/Descriptor.h"

namespace host {

// Locks the state folder for one host; the system releases the lock of a host that was killed.
// Creates a missing folder, for its owner only. If the folder is the host's own (empty but for a
// lock, or with its settings) and open to others, its mode is tightened, with one log line; any
// other folder keeps its mode, also with a line. Owner: the device, which constructs it before it
// opens anything in the folder. Failure: the constructor throws host::Error.
class StateFolderLock {
 public:
  static constexpr const char* kFileName = "lock";  // never removed: only the lock on it matters

  explicit StateFolderLock(const std::filesystem::path& folder);

 private:
  Descriptor m_file;
};

}  // namespace host
