#include "runtime/ClockPrivilege.h"

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace host {

bool maySetSystemClock() {
  __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct data[_LINUX_CAPABILITY_U32S_3] = {};
  if (::syscall(SYS_capget, &header, data) != 0) return false;
  return (data[CAP_SYS_TIME / 32].effective >> (CAP_SYS_TIME % 32) & 1U) != 0;
}

}  // namespace host
