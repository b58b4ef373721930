#include "runtime/ListenerWaker.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <utility>

#include "base/Descriptor.h"
#include "base/StartThread.h"
#include "runtime/ReportPipe.h"

namespace host {
namespace {

constexpr const char* kName = "waker of the report listener";

// A listener may come to its wait a moment after it was told to end.
constexpr std::chrono::milliseconds kBetweenWakes{2};

// Nothing happens when nobody waits: the open fails then.
void wake(const std::string& path) {
  const int pipe = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
  if (pipe < 0) return;
  constexpr std::array<char, 4> kNoTime{};
  if (isFifo(pipe) && write(pipe, kNoTime.data(), kNoTime.size()) < 0) {
    // Full or left: then there is something to read, or nobody to wake.
  }
  close(pipe);
}

}  // namespace

ListenerWaker::ListenerWaker(std::string path)
    : m_path(std::move(path)), m_thread(startThread(kName, [this] { work(); })) {}

ListenerWaker::ListenerWaker(const ReportPipe& pipe) : ListenerWaker(pipe.heldPath()) {}

ListenerWaker::~ListenerWaker() {
  {
    const MutexLock lock(m_mutex);
    m_ending = true;
  }
  m_changed.notify_all();
  m_thread.join();
}

void ListenerWaker::begin() {
  {
    const MutexLock lock(m_mutex);
    m_begun = true;
  }
  m_changed.notify_all();
}

// A listener may leave between our open and our write. That is no reason for the process to end:
// the thread does not hear signals.
void ListenerWaker::work() {
  MutexLock lock(m_mutex);
  m_changed.wait(lock.native(), [this]() CLOCK_REQUIRES(m_mutex) { return m_begun || m_ending; });
  if (!m_begun) return;
  do {
    lock.unlock();
    wake(m_path);
    lock.lock();
    m_changed.wait_for(lock.native(), kBetweenWakes,
                       [this]() CLOCK_REQUIRES(m_mutex) { return m_ending; });
  } while (!m_ending);
}

}  // namespace host
