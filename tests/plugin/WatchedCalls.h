#pragma once

#include <cstddef>
#include <functional>
#include <set>

namespace plugin {

// The linker replaces calls of the C library with functions that count them. A sleep returns
// immediately, and a query of the log level changes errno. Thread: any.
void resetCalls();
std::set<unsigned int> sleeps();  // the different numbers of seconds
int closes();
int failedStopWrites();  // writes of the stop signal through a descriptor not open for writing
void awaitCloses(int count);
int opensWithoutNoctty();  // for reading; a terminal would become the controlling one

// These hold until resetCalls.
void failReads(int error);                   // each read of four bytes fails with this error
void makeReadsEndless();                     // each longer read fills its buffer
std::size_t mostDropped();                   // bytes that these have read after one message
void afterStat(std::function<void()> call);  // called after each stat

}  // namespace plugin
