#pragma once

#include <functional>
#include <set>

namespace plugin {

// What this program asks of the system, in the place of which the linker puts these: a sleep is
// over at once, closes are counted, and to ask for the level of the log changes errno. Thread: any.
void forgetCalls();
std::set<unsigned int> sleeps();  // the different numbers of seconds
int closes();
int refusedStops();  // writes of the stop signal through a descriptor that is not open for writing
void awaitCloses(int count);
int opensThatTakeATerminal();  // for reading, without O_NOCTTY

// Until forgetCalls: each read of four bytes fails with this error; each longer read fills its
// buffer, as from a writer that never stops; after each stat this is called.
void failReads(int error);
void neverEndReads();
void afterStat(std::function<void()> call);

}  // namespace plugin
