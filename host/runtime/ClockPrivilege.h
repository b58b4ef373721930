#pragma once

namespace host {

// Whether this process may set the machine's clock. Sets nothing. Thread: any.
[[nodiscard]] bool maySetSystemClock();

}  // namespace host
