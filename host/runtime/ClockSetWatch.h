#pragma once

#include "base/Descriptor.h"

namespace host {

// A descriptor that becomes readable each time a program sets the machine's wall clock, but not
// when the clock is slewed. Read it with clearClockSetWatch. Throws Error.
[[nodiscard]] Descriptor openClockSetWatch();
void clearClockSetWatch(int watch);

}  // namespace host
