#pragma once

#include <functional>
#include <set>

namespace plugin {

// The linker replaces calls of the C library with functions that count them. A sleep returns at
// once, and asking for the level of the log changes errno. Thread: any.
void forgetCalls();
std::set<unsigned int> sleeps();  // the different numbers of seconds
int closes();
int refusedStops();  // writes of the stop signal through a descriptor that is not open for writing
void awaitCloses(int count);
int opensThatTakeATerminal();  // for reading, without O_NOCTTY

// These hold until forgetCalls.
void failReads(int error);                   // each read of four bytes fails with this error
void neverEndReads();                        // each longer read fills its buffer
void afterStat(std::function<void()> call);  // called after each stat

}  // namespace plugin
