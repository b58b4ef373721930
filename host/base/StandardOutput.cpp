#include "base/StandardOutput.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>

#include "base/PrintableText.h"

namespace host {
namespace {

// Writes again to get the errno, which the stream does not keep. 0: writing works again.
int writeError() {
  return ::write(STDOUT_FILENO, "\n", 1) < 0 ? errno : 0;
}

}  // namespace

std::string outputError(std::ostream& out) {
  if (out.flush()) return "";
  const int error = writeError();
  if (error == EPIPE) return "";
  const std::string cause = error == 0 ? "" : std::string(": ") + std::strerror(error);
  return "cannot write everything to standard output" + cause;
}

bool outputArrived(const char* program) {
  const std::string error = outputError(std::cout);
  if (!error.empty()) std::cerr << errorLine(program, error);
  return error.empty();
}

}  // namespace host
