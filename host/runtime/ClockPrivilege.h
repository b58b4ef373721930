#pragma once

#include <sys/types.h>

#include <optional>

namespace host {

// Whether this process may set the machine's clock. Sets nothing. Thread: any.
[[nodiscard]] bool maySetSystemClock();

// From now on neither this process nor a program that it starts can gain privileges by exec.
// REQUIRES: no other thread. Failure: host::Error.
void gainNoPrivileges();

// Drops all capabilities but the one to set the clock (CAP_SYS_TIME), for this thread and those
// that it starts later. Programs that it starts have none, even those of root; root then has only
// the access to files that an owner has. group: joined first if possible, so that the process can
// still give files to it. REQUIRES: no other thread. Failure: host::Error.
void keepOnlyClockPrivilege(std::optional<gid_t> group);

}  // namespace host
