#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace support {

// The named pipe of the NTP reports, at the path that the listener opens.
// Owner: the test. Failure: throws std::system_error.
class ReportPipe {
 public:
  static std::string path();  // in the folder of the test program

  ReportPipe();   // makes the pipe, and removes what was at its path
  ~ReportPipe();  // after the listener
  ReportPipe(const ReportPipe&) = delete;
  ReportPipe& operator=(const ReportPipe&) = delete;

  // Writes in an opening of its own: waits until the listener has closed the previous one and
  // opened the next, and has read some of the bytes.
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

// FD_CLOEXEC or 0, for each descriptor of this process on this file.
std::vector<int> descriptorFlagsOf(const std::string& path);

// Removes whatever is at the pipe's path.
void removeReportPipe();
void makeReportPipe();

}  // namespace support
