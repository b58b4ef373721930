#pragma once

#include <set>

namespace plugin {

// What this program asks of the system, in the place of which the linker puts these: a sleep is
// over at once, and a close is looked at. Thread: any.
void forgetCalls();
std::set<unsigned int> sleeps();  // the different numbers of seconds
int failedCloses();               // of what was not open, and may be somebody else's by now

}  // namespace plugin
