#pragma once

#include <iosfwd>
#include <string>

namespace host {

// What is wrong when `out`, which writes to standard output, has lost output. Flushes it. Empty:
// nothing, or the reader closed the pipe.
[[nodiscard]] std::string outputError(std::ostream& out);

// Flushes std::cout at the end of main. False, with one line on standard error, when output was
// lost; but true when the reader closed the pipe.
[[nodiscard]] bool outputArrived(const char* program);

}  // namespace host
