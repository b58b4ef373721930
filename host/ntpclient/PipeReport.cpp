#include "ntpclient/PipeReport.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

#include "base/Descriptor.h"

namespace host::ntp {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPause{10};  // no event signals that a listener opened

bool isRead(const Descriptor& pipe) {
  int unread = 0;
  return ::ioctl(pipe.get(), FIONREAD, &unread) == 0 && unread == 0;
}

enum class Step { again, written, noPipe };

Step tryToWrite(const char* path, std::uint32_t seconds, Descriptor& pipe) {
  pipe.reset(::open(path, kPipeFlags));
  if (!pipe.valid()) return Step::again;  // no reader, or no pipe yet
  if (!isFifo(pipe.get())) return Step::noPipe;
  const ssize_t written = ::write(pipe.get(), &seconds, sizeof seconds);
  return written == static_cast<ssize_t>(sizeof seconds) ? Step::written : Step::again;
}

}  // namespace

ReportResult reportTime(const char* path, std::uint32_t seconds, std::chrono::milliseconds limit,
                        const ParentWatch& watch) {
  const auto deadline = Clock::now() + limit;
  Descriptor pipe;
  Step step = Step::again;
  for (;;) {
    if (step == Step::again) step = tryToWrite(path, seconds, pipe);
    if (step == Step::noPipe) return ReportResult::noPipe;
    if (step == Step::written && isRead(pipe)) return ReportResult::delivered;
    if (Clock::now() >= deadline) return ReportResult::noListener;
    const auto pause = std::min(Clock::now() + kPause, deadline);
    if (watch.wait(pause) == ParentWatch::Event::parentGone) return ReportResult::parentGone;
  }
}

}  // namespace host::ntp
