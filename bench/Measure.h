#pragma once

#include "Figure.h"

namespace bench {

// One repetition each, in the unit that the table names. Thread: the program's only one.
// Failure: std::exception.
[[nodiscard]] Found measureRemoteMedian();
[[nodiscard]] Found measureRemoteTail();
[[nodiscard]] Found measureSixteenClients();
[[nodiscard]] Found measureSixteenClientsSystemCalls();
[[nodiscard]] Found measureCallSystemCalls();
[[nodiscard]] Found measureCallAllocations();
[[nodiscard]] Found measurePipeline();
[[nodiscard]] Found measurePipelineSystemCalls();
[[nodiscard]] Found measureSubscribers();
[[nodiscard]] Found measureEventSystemCalls();
[[nodiscard]] Found measureSet();
[[nodiscard]] Found measureSetConstant();
[[nodiscard]] Found measureSetSystemCalls();
[[nodiscard]] Found measureSetAllocations();
[[nodiscard]] Found measureSetSyncs();
[[nodiscard]] Found measureDaySyncs();
[[nodiscard]] Found measureStart();
[[nodiscard]] Found measureMemory();
[[nodiscard]] Found measureIdle();
[[nodiscard]] Found measureGetTime();
[[nodiscard]] Found measureGetTimeInstructions();
[[nodiscard]] Found measureMessage();

}  // namespace bench
