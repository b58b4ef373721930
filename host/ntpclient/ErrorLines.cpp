#include "ntpclient/ErrorLines.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>

#include "base/Descriptor.h"

namespace host::ntp {

void unblockStandardError() {
  struct stat found {};
  if (::fstat(STDERR_FILENO, &found) != 0) return;
  // Writes to a regular file do not block, and a reopened one would be overwritten from its start.
  if (!S_ISFIFO(found.st_mode) && !S_ISCHR(found.st_mode)) return;
  const Descriptor own(::open("/proc/self/fd/2", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (own.valid()) ::dup2(own.get(), STDERR_FILENO);
}

void ErrorLines::step(const std::string& what) const {
  static_cast<void>(write(what));
}

void ErrorLines::complain(const std::string& what, Instant now) {
  Complaint& complaint = m_complaints[what];
  std::string text = what;
  if (complaint.repeats > 0) text += "; " + std::to_string(complaint.repeats) + " more";
  if (complaint.repeats > 0 && complaint.written) text += " since the last such line";
  const bool isDue = !complaint.written || now - *complaint.written >= kQuiet;
  if (isDue && write(text)) {
    complaint = {now};
  } else {
    ++complaint.repeats;
  }
}

// Polls first: standard error may still be blocking, see unblockStandardError().
bool ErrorLines::write(const std::string& text) const {
  const std::string line = "ntpclient: " + text + '\n';
  pollfd ready{m_descriptor, POLLOUT, 0};
  if (::poll(&ready, 1, 0) != 1 || (ready.revents & POLLOUT) == 0) return false;
  return ::write(m_descriptor, line.data(), line.size()) == static_cast<ssize_t>(line.size());
}

}  // namespace host::ntp
