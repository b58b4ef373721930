#include "Processor.h"

#include <sched.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace bench {

std::size_t lastProcessor() {
  cpu_set_t allowed;
  CPU_ZERO(&allowed);
  if (sched_getaffinity(0, sizeof allowed, &allowed) != 0) {
    throw std::system_error(errno, std::generic_category(), "which processors may be used");
  }
  std::size_t last = CPU_SETSIZE - 1;
  while (last > 0 && !CPU_ISSET(last, &allowed)) --last;
  return last;
}

void pinTo(std::size_t processor) {
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(processor, &one);
  if (sched_setaffinity(0, sizeof one, &one) != 0) {
    throw std::system_error(errno, std::generic_category(),
                            "cannot stay on processor " + std::to_string(processor));
  }
}

}  // namespace bench
