#include "ntpclient/ErrorLines.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>

#include "base/Descriptor.h"

namespace host::ntp {

void unblockStandardError() {
  struct stat found {};
  if (::fstat(STDERR_FILENO, &found) != 0) return;
  // A file takes every write. Opened anew it would be overwritten from its start.
  if (!S_ISFIFO(found.st_mode) && !S_ISCHR(found.st_mode)) return;
  const Descriptor own(::open("/proc/self/fd/2", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (own.valid()) ::dup2(own.get(), STDERR_FILENO);
}

void ErrorLines::step(const std::string& what) const {
  static_cast<void>(write(what));
}

void ErrorLines::complain(const std::string& what, Instant now) {
  Run& run = m_runs[what];
  const bool isDue = !run.told || now - *run.told >= kQuiet;
  if (isDue && write(what + repeatsText(run))) {
    run = {now};
  } else {
    ++run.more;
  }
}

std::string ErrorLines::repeatsText(const Run& run) {
  if (run.more == 0) return "";
  const std::string times =
      run.more == 1 ? "; once more" : "; " + std::to_string(run.more) + " more times";
  return run.told ? times + " since the last such line" : times;
}

// Standard error may still wait for its reader: it is asked first.
bool ErrorLines::write(const std::string& text) const {
  const std::string line = "ntpclient: " + text + '\n';
  pollfd ready{m_descriptor, POLLOUT, 0};
  if (::poll(&ready, 1, 0) != 1 || (ready.revents & POLLOUT) == 0) return false;
  return ::write(m_descriptor, line.data(), line.size()) == static_cast<ssize_t>(line.size());
}

}  // namespace host::ntp
