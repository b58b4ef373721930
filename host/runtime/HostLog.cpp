#include "runtime/HostLog.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string_view>

#include "Logging.h"
#include "base/Error.h"
#include "base/LogLevels.h"
#include "runtime/EventLoop.h"
#include "runtime/LogFile.h"

namespace host {
namespace {

// A child process has no blocked signals (Process).
Descriptor hangups() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGHUP);
  ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
  std::signal(SIGHUP, SIG_DFL);  // an ignored signal would not be queued
  Descriptor descriptor(::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
  if (!descriptor.valid()) throw Error("no descriptor is left for SIGHUP");
  return descriptor;
}

std::shared_ptr<QueuedLog> sinkFor(const std::shared_ptr<LogFile>& file) {
  if (file == nullptr) return std::make_shared<QueuedLog>();
  return std::make_shared<QueuedLog>(
      QueuedLog::Output{[file](std::string_view lines) { file->write(lines); }, LogStyle::plain,
                        "the log file could not be written fast enough"});
}

}  // namespace

HostLog::HostLog(const std::filesystem::path& file)
    : m_file(file.empty() ? nullptr : std::make_shared<LogFile>(file)),
      m_hangups(m_file == nullptr ? Descriptor() : hangups()),
      m_sink(sinkFor(m_file)) {
  ApplicationLog::instance().addSink(m_sink);
}

HostLog::~HostLog() {
  ApplicationLog::instance().removeSink(m_sink);
}

void HostLog::reopenOnHangup(EventLoop& loop) {
  if (m_file == nullptr) return;
  loop.onReadable(m_hangups.get(), std::chrono::milliseconds(0), [this] {
    signalfd_siginfo arrived;
    while (::read(m_hangups.get(), &arrived, sizeof arrived) > 0) continue;
    m_file->reopen();
    logAppUni("clockhost", kLogNote, __FILE__, __LINE__, "SIGHUP: log file reopened");
  });
}

}  // namespace host
