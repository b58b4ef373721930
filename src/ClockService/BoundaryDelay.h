#pragma once

#include <ctime>

// How long until the local clock reaches its next full hour or midnight, under the process's TZ.
// now: seconds since 1970-01-01 UTC. Result in milliseconds, never 0: at most two hours or two
// days, since a daylight-saving change may come in between. Defined for every `now`, also for one
// that localtime_r cannot convert.
namespace BoundaryDelay {

unsigned int toNextHour(time_t now);
unsigned int toNextMidnight(time_t now);

// A date as one number, 20240307 for 7 March 2024, to see whether two are the same. A year that
// does not fit stops at the type's limits. day: 1-31, month: 1-12, year: all four digits.
int dateNumber(int day, int month, int year);

// The number of the local date. Defined for every `now`.
int localDay(time_t now);

}  // namespace BoundaryDelay
