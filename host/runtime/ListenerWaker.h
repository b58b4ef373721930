#pragma once

#include <condition_variable>
#include <string>
#include <thread>

#include "base/Mutex.h"

namespace host {

// Wakes the plug-in's listener at shutdown. The listener blocks in open() or read() of the report
// pipe, and looks at its stop flag only in between. From begin() to destruction, at least once, the
// waker opens the pipe for writing and writes four zero bytes, every few milliseconds. Its thread
// starts with the object, because a shutdown may find no thread left. Owner: the device. Failure:
// the constructor throws Error when no thread can be started; a missing pipe is ignored.
class ListenerWaker {
 public:
  explicit ListenerWaker(std::string pipePath);
  ~ListenerWaker();
  ListenerWaker(const ListenerWaker&) = delete;
  ListenerWaker& operator=(const ListenerWaker&) = delete;

  void begin();

 private:
  void wakeUntilDestroyed();

  const std::string m_path;
  Mutex m_mutex;
  std::condition_variable m_changed;
  bool m_begun CLOCK_GUARDED_BY(m_mutex) = false;
  bool m_ending CLOCK_GUARDED_BY(m_mutex) = false;
  std::thread m_thread;  // last: it uses all of the above
};

}  // namespace host
