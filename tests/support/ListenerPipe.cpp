#include "support/ListenerPipe.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "DevicePaths.h"
#include "support/Becomes.h"

namespace support {

namespace {

void require(bool done, const char* what) {
  if (!done) throw std::system_error(errno, std::generic_category(), what);
}

// How many descriptors of this process are open on the pipe: the listener's and the writers'.
std::size_t timesOpenHere(const std::string& path) {
  return descriptorFlagsOf(path).size();
}

int bytesLeft(int pipe) {
  int bytes = 0;
  require(ioctl(pipe, FIONREAD, &bytes) == 0, "FIONREAD");
  return bytes;
}

template <class Condition>
void await(Condition condition, const char* what) {
  if (!becomesTrue(condition)) throw std::runtime_error(what);
}

}  // namespace

// Finds descriptors by file, because those of the listener are private.
std::vector<int> descriptorFlagsOf(const std::string& path) {
  std::vector<int> flags;
  struct stat file {};
  if (stat(path.c_str(), &file) != 0) return flags;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    struct stat other {};
    if (stat(entry.path().c_str(), &other) == 0 && other.st_dev == file.st_dev &&
        other.st_ino == file.st_ino)
      flags.push_back(fcntl(std::stoi(entry.path().filename()), F_GETFD));
  }
  return flags;
}

std::string ListenerPipe::path() {
  return DevicePaths::kNtpClientPipe;
}

void removeReportPipe() {
  std::filesystem::remove_all(ListenerPipe::path());
}

void makeReportPipe() {
  const auto folder = std::filesystem::path(ListenerPipe::path()).parent_path();
  if (!folder.empty()) std::filesystem::create_directories(folder);
  removeReportPipe();
  require(mkfifo(ListenerPipe::path().c_str(), 0600) == 0, "mkfifo");
}

ListenerPipe::ListenerPipe() {
  makeReportPipe();
}

ListenerPipe::~ListenerPipe() {
  endWaking();
}

void ListenerPipe::renew() {
  if (!m_waker.joinable()) return;
  endWaking();
  makeReportPipe();
}

void ListenerPipe::endWaking() {
  m_waking = false;
  if (m_waker.joinable()) m_waker.join();
}

void ListenerPipe::awaitClosed() {
  await([] { return timesOpenHere(path()) == 0; }, "the listener keeps the pipe open");
}

// The listener drops a second message in one opening, so it must have closed the previous one. If
// this opening ended before the listener's open returned, it could merge with the next.
void ListenerPipe::write(const std::string& bytes) const {
  awaitClosed();
  const int pipe = open(path().c_str(), O_WRONLY | O_CLOEXEC);
  require(pipe >= 0, "open for writing");
  await([] { return timesOpenHere(path()) > 1; }, "the listener does not open the pipe");
  const int size = static_cast<int>(bytes.size());
  const ssize_t written = ::write(pipe, bytes.data(), bytes.size());
  if (written == size && size > 0)
    await([&] { return bytesLeft(pipe) < size; }, "the listener does not read");
  close(pipe);
  require(written == size, "write");
}

void ListenerPipe::report(std::uint32_t secondsSinceEpoch) const {
  write(bytesOf(secondsSinceEpoch));
}

std::string ListenerPipe::bytesOf(std::uint32_t secondsSinceEpoch) {
  std::string bytes(sizeof secondsSinceEpoch, '\0');
  std::memcpy(bytes.data(), &secondsSinceEpoch, sizeof secondsSinceEpoch);
  return bytes;
}

// Opening for writing makes the listener's open return; closing makes its read return.
void ListenerPipe::release() {
  if (m_waking.exchange(true)) return;
  m_waker = std::thread([this] {
    while (m_waking) {
      const int pipe = open(path().c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
      if (pipe >= 0) close(pipe);
      std::this_thread::yield();
    }
  });
}

}  // namespace support
