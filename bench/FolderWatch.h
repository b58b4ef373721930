#pragma once

#include <filesystem>

#include "remote/Descriptor.h"

namespace bench {

// Tells of what is new in a folder. Who waits sleeps, and so leaves the processor to who is waited
// for. Its end takes the system up to some 20 ms: it is to live longer than what is timed.
// Owner: a measurement. Failure: std::system_error from the constructor.
class FolderWatch {
 public:
  explicit FolderWatch(const std::filesystem::path& folder);

  // Until something has come since the last wait or forgetting; std::runtime_error after ten
  // seconds.
  void wait() const;
  void forget() const;

 private:
  host::Descriptor m_descriptor;
};

}  // namespace bench
