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

bool outputArrived(const char* program) {
  if (std::cout.flush()) return true;
  const int error = writeError();
  if (error == EPIPE) return true;
  const std::string cause = error == 0 ? "" : std::string(": ") + std::strerror(error);
  std::cerr << errorLine(program, "cannot write everything to standard output" + cause);
  return false;
}

}  // namespace host
