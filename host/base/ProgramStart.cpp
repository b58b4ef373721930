#include "base/ProgramStart.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <initializer_list>

namespace host {
namespace {

// In ascending order, because open returns the lowest free descriptor.
void fillStandardDescriptors() {
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(standard, F_GETFD) >= 0 || errno != EBADF) continue;
    if (open("/dev/null", O_RDWR) != standard) _exit(1);
  }
}

}  // namespace

void startProgram() {
  fillStandardDescriptors();
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace host
