#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace support {

// The named pipe of the NTP reports, at the path that the listener opens.
// Owner: the test. Failure: throws std::system_error.
class ListenerPipe {
 public:
  static std::string path();  // in the folder of the test program

  ListenerPipe();   // makes the pipe, and removes what was at its path
  ~ListenerPipe();  // REQUIRES: the listener has ended
  ListenerPipe(const ListenerPipe&) = delete;
  ListenerPipe& operator=(const ListenerPipe&) = delete;

  // Opens the pipe, writes and closes it. Waits until the listener has reopened the pipe after the
  // previous report, and has read some of the bytes.
  void write(const std::string& bytes) const;
  void report(std::uint32_t secondsSinceEpoch) const;

  // Returns when the listener has handled the last message, including the observer's call.
  static void awaitClosed();

  // From now on opens and closes the pipe again and again, so that a listener can end.
  void release();

  // After release: makes the pipe again, for the next listener.
  void renew();

  static std::string bytesOf(std::uint32_t secondsSinceEpoch);

 private:
  void endWaking();

  std::atomic<bool> m_waking{false};
  std::thread m_waker;
};

// The descriptor flags, FD_CLOEXEC or 0, of each descriptor of this process that refers to the
// file.
std::vector<int> descriptorFlagsOf(const std::string& path);

// Removes whatever is at the pipe's path.
void removeReportPipe();
void makeReportPipe();

}  // namespace support
