#pragma once

#include <filesystem>

#include "base/Descriptor.h"

namespace host {

// Locks the state folder for one host with flock() on a file in it. The kernel releases the lock of
// a killed host. Creates a missing folder, for its owner only. A folder that others can open is
// tightened to its owner, with one log line, if it contains the host's settings or nothing but the
// lock; any other folder keeps its mode, also with a line. Owner: the device, which constructs it
// before it opens anything in the folder. Failure: the constructor throws host::Error.
class StateFolderLock {
 public:
  static constexpr const char* kFileName = "lock";  // stays behind when the host ends

  explicit StateFolderLock(const std::filesystem::path& folder);

 private:
  Descriptor m_file;
};

}  // namespace host
