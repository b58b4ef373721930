#pragma once

#include <condition_variable>
#include <string>
#include <thread>

#include "base/Mutex.h"

namespace host {

class ReportPipe;

// From begin() until it goes, at least once, wakes whoever waits for the pipe in open or read, so
// that a listener told to end gets to see that: again and again it opens the pipe for writing and
// writes four zero bytes. Its thread is there from the start: at the end there may be none to be
// had. Owner: whoever takes the listener down. Failure: the constructor throws Error: no thread is
// left; a pipe that is not there wakes nobody.
class ListenerWaker {
 public:
  explicit ListenerWaker(std::string path);
  // Whoever waits for the pipe that the object holds, whatever is at its path. It outlives the
  // waker.
  explicit ListenerWaker(const ReportPipe& pipe);
  ~ListenerWaker();
  ListenerWaker(const ListenerWaker&) = delete;
  ListenerWaker& operator=(const ListenerWaker&) = delete;

  void begin();

 private:
  void work();

  const std::string m_path;
  Mutex m_mutex;
  std::condition_variable m_changed;
  bool m_begun CLOCK_GUARDED_BY(m_mutex) = false;
  bool m_ending CLOCK_GUARDED_BY(m_mutex) = false;
  std::thread m_thread;  // last: it uses all of the above
};

}  // namespace host
