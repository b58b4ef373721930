#include "runtime/ListenerWaker.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <utility>

#include "base/Descriptor.h"
#include "services/ManagementThread.h"

namespace host {
namespace {

// The listener may begin another wait just after a wake: its stop flag is set later.
constexpr std::chrono::milliseconds kBetweenWakes{2};

// Does nothing when no listener waits: the open then fails.
void wake(const std::string& path) {
  const int pipe = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
  if (pipe < 0) return;
  constexpr std::array<char, 4> kNoTime{};
  if (isFifo(pipe) && write(pipe, kNoTime.data(), kNoTime.size()) < 0) {
    // Full: the listener has something to read. Broken: the listener is awake.
  }
  close(pipe);
}

}  // namespace

ListenerWaker::ListenerWaker(std::string pipePath, ManagementThread& thread)
    : m_path(std::move(pipePath)) {
  thread.post([this] { wakeUntilDestroyed(); });
}

ListenerWaker::~ListenerWaker() {
  MutexLock lock(m_mutex);
  m_ending = true;
  m_changed.notify_all();
  m_changed.wait(lock.native(), [this]() CLOCK_REQUIRES(m_mutex) { return m_ended; });
}

// If the listener closes the pipe between our open and our write, the write raises SIGPIPE.
// startThread blocks signals in the management thread, so the process survives.
void ListenerWaker::wakeUntilDestroyed() {
  MutexLock lock(m_mutex);
  do {
    lock.unlock();
    wake(m_path);
    lock.lock();
    m_changed.wait_for(lock.native(), kBetweenWakes,
                       [this]() CLOCK_REQUIRES(m_mutex) { return m_ending; });
  } while (!m_ending);
  m_ended = true;
  m_changed.notify_all();
}

}  // namespace host
