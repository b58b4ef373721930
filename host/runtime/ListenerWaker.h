#pragma once

#include <condition_variable>
#include <string>

#include "base/Mutex.h"

namespace host {

class ManagementThread;

// Wakes the plug-in's listener at shutdown. The listener blocks in open() or read() of the report
// pipe, and looks at its stop flag only in between. So the waker opens the pipe for writing and
// writes four zero bytes: at least once, and every few milliseconds until its destruction. It runs
// on the management thread, because a shutdown may be unable to create a thread. Other tasks of
// that thread wait meanwhile. Owner: the device's stop(), on another thread. Failure: a missing
// pipe is ignored.
class ListenerWaker {
 public:
  ListenerWaker(std::string pipePath, ManagementThread& thread);
  ~ListenerWaker();
  ListenerWaker(const ListenerWaker&) = delete;
  ListenerWaker& operator=(const ListenerWaker&) = delete;

 private:
  void wakeUntilDestroyed();

  const std::string m_path;
  Mutex m_mutex;
  std::condition_variable m_changed;
  bool m_ending CLOCK_GUARDED_BY(m_mutex) = false;
  bool m_ended CLOCK_GUARDED_BY(m_mutex) = false;
};

}  // namespace host
