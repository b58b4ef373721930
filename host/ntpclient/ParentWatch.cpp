#include "ntpclient/ParentWatch.h"

#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "base/MillisecondsUntil.h"

namespace host::ntp {

ParentWatch::ParentWatch() {
  const pid_t parent = ::getppid();
  m_parent.reset(static_cast<int>(::syscall(SYS_pidfd_open, parent, 0)));
  if (!m_parent.valid()) ::prctl(PR_SET_PDEATHSIG, SIGTERM);
  // If the parent ended before it was watched, another process is the parent by now.
  if (::getppid() != parent) ::raise(SIGTERM);
}

ParentWatch::Event ParentWatch::wait(Deadline deadline, int descriptor) const {
  for (;;) {
    pollfd waited[] = {{m_parent.get(), POLLIN, 0}, {descriptor, POLLIN, 0}};
    const int left = millisecondsUntil(deadline);
    const int ready = ::poll(waited, std::size(waited), left);
    if (ready > 0 && waited[0].revents != 0) return Event::parentGone;
    if (ready > 0) return Event::ready;
    if (left == 0) return Event::timeout;
  }
}

}  // namespace host::ntp
