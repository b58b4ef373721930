#pragma once

namespace host {

// Flushes std::cout, at the end of main. False, with one line on standard error, when something
// written to it was lost; a reader that has gone is none of our business, and true.
[[nodiscard]] bool outputArrived(const char* program);

}  // namespace host
