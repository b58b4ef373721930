#pragma once

#include <sys/wait.h>
#include <unistd.h>

namespace support {

// Runs the body in a process of its own, which ends with what the body returns as its exit status.
// The status; 128 + signal when a signal has ended it; -1 without a process.
template <class Body>
int statusInChild(Body body) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(body());
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace support
