#pragma once

#include "verbs/Json.h"

namespace host {

// A request of requestOf() as a host takes it: an instant that is set gets its 25 characters. What
// a host could only refuse, or ignore, is refused at once: unknown names, a call with a missing
// parameter or one of another type, another form of a time. Throws UsageError. Pure; thread: any.
[[nodiscard]] Json checkedRequest(Json request);

}  // namespace host
