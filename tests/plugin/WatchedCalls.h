#pragma once

#include <set>

namespace plugin {

// What this program asks of the system, in the place of which the linker puts these: a sleep is
// over at once, and closes are counted. Thread: any.
void forgetCalls();
std::set<unsigned int> sleeps();  // the different numbers of seconds
int closes();

}  // namespace plugin
