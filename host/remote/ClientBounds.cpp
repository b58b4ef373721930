#include "remote/ClientBounds.h"

#include <sys/resource.h>

namespace host {

std::size_t clientsWithDescriptors() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return kMostClients;
  return limit.rlim_cur > kOwnDescriptors ? limit.rlim_cur - kOwnDescriptors : 1;
}

}  // namespace host
