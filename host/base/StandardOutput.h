#pragma once

namespace host {

// Flushes std::cout at the end of main. False, with one line on standard error, when output was
// lost; but true when the reader closed the pipe.
[[nodiscard]] bool outputArrived(const char* program);

}  // namespace host
