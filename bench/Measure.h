#pragma once

#include "Findings.h"

namespace bench {

// Each measures one thing and puts what it finds under the names of the table of figures, in the
// table's units. Thread: the program's one. Failure: an exception; its figures are not there then.
void measureOneClient(Findings& findings);
void measureSixteenClients(Findings& findings);
void measureHandleMessage(Findings& findings);
void measureGetTime(Findings& findings);
void measureGetUtcTime(Findings& findings);
void measureSetData(Findings& findings);
void measureSyncs(Findings& findings);
void measureObservers(Findings& findings);
void measureSubscribers(Findings& findings);
void measureStart(Findings& findings);
void measureMemory(Findings& findings);
void measureArmSize(Findings& findings);
void measureQuietDay(Findings& findings);
void measureIdle(Findings& findings);
void measureYear(Findings& findings);
void measureNetworkYear(Findings& findings);
void measureWeekOfClients(Findings& findings);
void measureEventGrowth(Findings& findings);
void measureObserverGrowth(Findings& findings);
void measureAudienceGrowth(Findings& findings);
void measureClientGrowth(Findings& findings);
void measureTimerGrowth(Findings& findings);

}  // namespace bench
