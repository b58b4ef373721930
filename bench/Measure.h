#pragma once

#include "Figure.h"

namespace bench {

// One repetition each, in the unit that the table names. Thread: the program's only one.
// Failure: std::exception.
[[nodiscard]] Sample measureRemoteMedian();
[[nodiscard]] Sample measureRemoteTail();
[[nodiscard]] Sample measureSixteenClients();
[[nodiscard]] Sample measureSixteenClientsSystemCalls();
[[nodiscard]] Sample measureCallSystemCalls();
[[nodiscard]] Sample measureCallAllocations();
[[nodiscard]] Sample measurePipeline();
[[nodiscard]] Sample measurePipelineSystemCalls();
[[nodiscard]] Sample measureSubscribers();
[[nodiscard]] Sample measureEventSystemCalls();
[[nodiscard]] Sample measureSet();
[[nodiscard]] Sample measureSetConstant();
[[nodiscard]] Sample measureSetSystemCalls();
[[nodiscard]] Sample measureSetAllocations();
[[nodiscard]] Sample measureSetSyncs();
[[nodiscard]] Sample measureDaySyncs();
[[nodiscard]] Sample measureStart();
[[nodiscard]] Sample measureMemory();
[[nodiscard]] Sample measureIdle();
[[nodiscard]] Sample measureGetTime();
[[nodiscard]] Sample measureGetTimeInstructions();
[[nodiscard]] Sample measureMessage();
[[nodiscard]] Sample measureMessageInstructions();

}  // namespace bench
