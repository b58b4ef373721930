#pragma once

#include <sys/resource.h>
#include <unistd.h>

namespace support {

// From now on this process can start no thread. For a child process: root gives up its identity,
// because the limit does not apply to root.
inline void refuseThreads() {
  constexpr uid_t kNobody = 65534;
  if (::geteuid() == 0) static_cast<void>(::setuid(kNobody));
  const rlimit none{0, 0};
  ::setrlimit(RLIMIT_NPROC, &none);
}

}  // namespace support
