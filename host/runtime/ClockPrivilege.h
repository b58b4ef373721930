#pragma once

#include <sys/types.h>

#include <optional>

namespace host {

// Whether this process may set the machine's clock. Sets nothing. Thread: any.
[[nodiscard]] bool maySetSystemClock();

// From now on no program that this process starts, and none that it becomes, gains a privilege by
// that. REQUIRES: no other thread. Failure: host::Error.
void gainNoPrivileges();

// Of all capabilities this thread, and each that it starts later, keeps the one to set the clock,
// if it has it. Programs that it starts get none, also those of root. Files are then open to root
// as to any owner. group: this process joins it first if it may, so that it can still give a file
// to it. REQUIRES: no other thread. Failure: host::Error.
void keepOnlyClockPrivilege(std::optional<gid_t> group);

}  // namespace host
