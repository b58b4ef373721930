#include "base/TerminationSignals.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <iterator>

#include "base/Error.h"

namespace host {
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM};

// Lock-free, because the signal handler uses them.
std::atomic<bool> g_arrived{false};
std::atomic<int> g_wake{-1};  // eventfd
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

struct sigaction g_former[std::size(kSignals)];

extern "C" void noteSignal(int) {
  const int error = errno;
  g_arrived = true;
  static_cast<void>(::eventfd_write(g_wake, 1));
  errno = error;
}

}  // namespace

TerminationSignals::TerminationSignals() {
  const int wake = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (wake < 0) throw Error("no descriptor is left for SIGINT and SIGTERM");
  g_wake = wake;
  g_arrived = false;
  struct sigaction note {};
  note.sa_handler = noteSignal;
  note.sa_flags = SA_RESTART;
  for (std::size_t i = 0; i < std::size(kSignals); ++i) {
    ::sigaction(kSignals[i], &note, &g_former[i]);
  }
}

TerminationSignals::~TerminationSignals() {
  for (std::size_t i = 0; i < std::size(kSignals); ++i) {
    ::sigaction(kSignals[i], &g_former[i], nullptr);
  }
  ::close(g_wake.exchange(-1));
}

bool TerminationSignals::take() {
  if (!g_arrived) return false;  // before each task, so without a system call
  g_arrived = false;
  eventfd_t count = 0;
  static_cast<void>(::eventfd_read(g_wake, &count));
  return true;
}

int TerminationSignals::descriptor() const {
  return g_wake;
}

}  // namespace host
