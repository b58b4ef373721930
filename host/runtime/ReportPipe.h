#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "remote/Descriptor.h"

namespace host {

// The named pipe of the NTP reports, for its owner only. It stays when the object goes: a client
// may still hold it.
// Owner: the device. Failure: the constructor throws Error: it cannot be created, or folder or pipe
// are somebody else's.
class ReportPipe {
 public:
  static constexpr const char* kDeviceFolder = "/tmp/votk/ipc";
  static constexpr const char* kDevicePath = "/tmp/votk/ipc/ntpclient";

  ReportPipe();

  // On this machine.
  [[nodiscard]] const std::string& path() const { return m_path; }

  // A way to this very pipe, also after its file was deleted or replaced; as long as the object.
  [[nodiscard]] std::string heldPath() const;

 private:
  std::string m_path;
  Descriptor m_held;  // neither a reader nor a writer
};

// From begin() until it goes, at least once, wakes whoever waits for the pipe in open or read, so
// that a listener told to end gets to see that: again and again it opens the pipe for writing and
// writes four zero bytes. Its thread is there from the start: at the end there may be none to be
// had. Owner: whoever takes the listener down. Failure: the constructor throws Error: no thread is
// left; a pipe that is not there wakes nobody.
class ListenerWaker {
 public:
  explicit ListenerWaker(std::string path);
  // Also whoever waits for a pipe that is not at its path any more. The pipe outlives the waker.
  explicit ListenerWaker(const ReportPipe& pipe);
  ~ListenerWaker();
  ListenerWaker(const ListenerWaker&) = delete;
  ListenerWaker& operator=(const ListenerWaker&) = delete;

  void begin();

 private:
  void work();

  const std::string m_path;
  const std::string m_heldPath;  // empty: none
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_begun = false;
  bool m_ending = false;
  std::thread m_thread;  // last: it uses all of the above
};

}  // namespace host
