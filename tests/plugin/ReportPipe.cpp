#include "plugin/ReportPipe.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "DevicePaths.h"

namespace plugin {

namespace {

void require(bool done, const char* what) {
  if (!done) throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

std::string ReportPipe::path() {
  return DevicePaths::ntpClientPipe;
}

void removeReportPipe() {
  std::filesystem::remove_all(ReportPipe::path());
}

void makeReportPipe() {
  const auto folder = std::filesystem::path(ReportPipe::path()).parent_path();
  if (!folder.empty()) std::filesystem::create_directories(folder);
  removeReportPipe();
  require(mkfifo(ReportPipe::path().c_str(), 0600) == 0, "mkfifo");
}

ReportPipe::ReportPipe() {
  makeReportPipe();
}

ReportPipe::~ReportPipe() {
  release();
  if (m_wakeUp >= 0) close(m_wakeUp);
}

void ReportPipe::renew() {
  if (m_wakeUp < 0) return;
  close(m_wakeUp);
  m_wakeUp = -1;
  makeReportPipe();
}

void ReportPipe::write(const std::string& bytes) const {
  const int pipe = open(path().c_str(), O_WRONLY | O_CLOEXEC);
  require(pipe >= 0, "open for writing");
  const ssize_t written = ::write(pipe, bytes.data(), bytes.size());
  close(pipe);
  require(written == static_cast<ssize_t>(bytes.size()), "write");
}

void ReportPipe::report(std::uint32_t secondsSinceEpoch) const {
  write(bytesOf(secondsSinceEpoch));
}

std::string ReportPipe::bytesOf(std::uint32_t secondsSinceEpoch) {
  std::string bytes(sizeof secondsSinceEpoch, '\0');
  std::memcpy(bytes.data(), &secondsSinceEpoch, sizeof secondsSinceEpoch);
  return bytes;
}

// The order counts. While this holds the pipe open, no listener waits in open; once the name means
// the null device, no listener comes back to the pipe; the one that is still in read gets a zero.
void ReportPipe::release() {
  if (m_wakeUp >= 0) return;
  m_wakeUp = open(path().c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  if (m_wakeUp < 0) return;  // the test has put something else there
  const std::string nothing = path() + ".nothing";
  std::filesystem::remove(nothing);
  std::filesystem::create_symlink("/dev/null", nothing);
  std::filesystem::rename(nothing, path());
  const std::string zero = bytesOf(0);
  require(::write(m_wakeUp, zero.data(), zero.size()) > 0, "wake-up");
}

}  // namespace plugin
