#include "SNTPTimeChangeObserver.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <ctime>
#include <system_error>

#include "DevicePaths.h"
#include "Log.h"
#include "OpenFile.h"
#include "SemaphoreGuard.h"

const std::string SNTPClientThread::ntpclient_pipe = DevicePaths::kNtpClientPipe;

namespace {

constexpr unsigned int kSecondsBetweenAttempts = 1;

// The pipe is closed after this many dropped bytes, so that a writer that never stops does not
// block the listener. It is the largest capacity of a pipe.
constexpr ssize_t kMostBytesOfAPipe = 1 << 20;

std::string errorText(int error) {
  return std::error_code(error, std::generic_category()).message();
}

// result: of the call that filled `status`.
bool isSomethingElse(int result, const struct stat& status) {
  return result == 0 && !S_ISFIFO(status.st_mode);
}

// Opens the pipe for reading, which waits for a writer. Returns the error text, empty on success.
// A file of another kind is not opened; the second check is for one that replaced the pipe in
// between.
std::string openPipe(OpenFile& pipe, const char* path) {
  constexpr const char* kWrongKind = "Not a named pipe";
  struct stat status {};
  if (isSomethingElse(stat(path, &status), status)) return kWrongKind;
  if (!pipe.open(path, O_RDONLY)) return errorText(errno);
  if (!isSomethingElse(fstat(pipe.number(), &status), status)) return {};
  pipe.close();
  return kWrongKind;
}

// Never blocks, even while the writer keeps its end open. Bytes left in the pipe would be the first
// message of the next opening.
void dropRest(int pipe) {
  if (fcntl(pipe, F_SETFL, O_NONBLOCK) < 0) return;
  std::array<char, PIPE_BUF> rest;
  for (ssize_t left = kMostBytesOfAPipe; left > 0;) {
    const ssize_t count = read(pipe, rest.data(), rest.size());
    if (count <= 0) return;
    left -= count;
  }
}

}  // namespace

SNTPClientThread::SNTPClientThread(SNTPTimeChangeObserver* timeChangeObserver)
    : observer(timeChangeObserver) {
  CLOCK_LOG(logInformation, "NTPClientThread is constructed");
}

SNTPClientThread::~SNTPClientThread() {
  if (running.exchange(false)) {
    wakeListener();
    threader.waitForThreadCompletion(threadId);
  }
  if (threadId != 0) threader.destroy(threadId);
}

// The pipe is opened for reading here, by design, so the write fails: the thread ends only when its
// open or read returns for another reason.
void SNTPClientThread::wakeListener() {
  OpenFile pipe;
  if (!pipe.open(ntpclient_pipe.c_str(), O_RDONLY | O_NONBLOCK)) return;
  constexpr std::uint32_t kStopSignal = 0;
  [[maybe_unused]] const ssize_t written = write(pipe.number(), &kStopSignal, sizeof kStopSignal);
}

void SNTPClientThread::start() {
  running = true;
  constexpr int kDefaultStack = 0;
  if (threader.spawn(&threadId, this, "SNTP Recognition Thread", votkThreadPriorityLow,
                     kDefaultStack))
    return;
  running = false;
  CLOCK_LOG(logError, "NTP Client Thread couldn't be started");
}

void SNTPClientThread::releaseObserver() {
  const SemaphoreGuard guard(reportLock);
  observer = nullptr;
}

// One message for each opening: the writer opens, writes one value and closes. The rest of an
// opening is dropped.
void SNTPClientThread::run() {
  CLOCK_LOG(logInformation, "NTP Client Thread has been started");
  OpenFile pipe;  // outside the loop: stays open after a break until the thread ends
  while (running) {
    const std::string failure = openPipe(pipe, ntpclient_pipe.c_str());
    if (!failure.empty()) {
      CLOCK_LOG(logError, "Cannot open %s: %s\n", ntpclient_pipe.c_str(), failure.c_str());
      sleep(kSecondsBetweenAttempts);
      continue;
    }
    if (!takeMessage(pipe.number())) break;
    dropRest(pipe.number());
    pipe.close();
  }
  running = false;
  CLOCK_LOG(logInformation, "NTP Client Thread finished");
}

bool SNTPClientThread::takeMessage(int pipe) {
  std::uint32_t secondsSinceEpoch = 0;
  const ssize_t count = read(pipe, &secondsSinceEpoch, sizeof secondsSinceEpoch);
  const int error = errno;
  if (!running) return false;
  if (count < 0) {
    CLOCK_LOG(logError, "Read failed: %s", errorText(error).c_str());
    sleep(kSecondsBetweenAttempts);
  } else if (secondsSinceEpoch != 0) {
    report(secondsSinceEpoch);
  }
  return true;
}

void SNTPClientThread::report(unsigned long secondsSinceEpoch) {
  const auto time = static_cast<time_t>(secondsSinceEpoch);
  std::array<char, 26> rendered{};
  ctime_r(&time, rendered.data());
  CLOCK_LOG(logInformation, "Time change message received from ntpclient EPOC: %lu  CTIME: %s",
            secondsSinceEpoch, rendered.data());
  const SemaphoreGuard guard(reportLock);
  if (observer != nullptr) observer->handleSNTPClientUpdate(static_cast<long>(secondsSinceEpoch));
}
