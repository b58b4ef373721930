#pragma once

#include <chrono>

// The time of this process. A workstation's own clock must not be set, so Clock.cpp defines the C
// library's time calls: the plug-in reads and sets this clock. A telephone leaves them out, except
// stime, which newer C libraries do not provide. Thread: any.
namespace example::Clock {

using Milliseconds = std::chrono::milliseconds;

// Since the start of the process.
Milliseconds uptime();

// From now on time passes only by skipTo, and then at once.
void startSkipping();
bool isSkipping();
void skipTo(Milliseconds uptime);

}  // namespace example::Clock
