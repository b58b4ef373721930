#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace plugin {

// The named pipe of the NTP reports, at the place where the listener looks for it.
// Owner: the test. Failure: throws std::system_error.
class ReportPipe {
 public:
  static std::string path();  // in the folder of the test program

  ReportPipe();   // makes the pipe; what was in its place is gone
  ~ReportPipe();  // after the listener
  ReportPipe(const ReportPipe&) = delete;
  ReportPipe& operator=(const ReportPipe&) = delete;

  // Writes in an opening of its own: waits for the listener to close the one before and to open
  // the next, and until it has read something of the bytes.
  void write(const std::string& bytes) const;
  void report(std::uint32_t secondsSinceEpoch) const;

  // Returns when the listener has done with what was written: the observer has been told.
  static void awaitClosed();

  // A listener does not wait any more: one empty opening follows the other. For its end.
  void release();

  // After release: a pipe again, for the next listener.
  void renew();

  static std::string bytesOf(std::uint32_t secondsSinceEpoch);

 private:
  void endWaking();

  std::atomic<bool> m_waking{false};
  std::thread m_waker;
};

// FD_CLOEXEC or 0, for each descriptor of this process that a file is open at.
std::vector<int> descriptorFlagsOf(const std::string& path);

// Nothing at the place of the pipe: neither file nor folder.
void removeReportPipe();
void makeReportPipe();

}  // namespace plugin
