// Apart from the observers' own source, so that the compiler does not know whom it calls.
#include "Observers.h"

namespace bench {

void callEach(const std::vector<ClockServiceObserverIfc*>& observers, int hours) {
  for (ClockServiceObserverIfc* const observer : observers) {
    observer->timeChangeEvent(hours, 0, 0);
  }
}

}  // namespace bench
