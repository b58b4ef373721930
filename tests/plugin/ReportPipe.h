#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace plugin {

// The named pipe of the NTP reports, at the place where the listener looks for it.
// Owner: the test. Failure: throws std::system_error.
class ReportPipe {
 public:
  static std::string path();  // in the folder of the test program

  ReportPipe();   // makes the pipe; what was in its place is gone
  ~ReportPipe();  // a listener that still runs finds nothing to wait for
  ReportPipe(const ReportPipe&) = delete;
  ReportPipe& operator=(const ReportPipe&) = delete;

  // Writes in an opening of its own: waits for the listener to close the one before and to open
  // the next, and until it has read something of the bytes.
  void write(const std::string& bytes) const;
  void report(std::uint32_t secondsSinceEpoch) const;

  // A listener never waits again: it finds an endless row of empty openings. For its end.
  void release();

  // After release: a pipe again, for the next listener.
  void renew();

  static std::string bytesOf(std::uint32_t secondsSinceEpoch);

 private:
  int m_wakeUp = -1;  // holds the replaced pipe open
};

// FD_CLOEXEC or 0, for each descriptor of this process that a file is open at.
std::vector<int> descriptorFlagsOf(const std::string& path);

// Nothing at the place of the pipe: neither file nor folder.
void removeReportPipe();
void makeReportPipe();

}  // namespace plugin
