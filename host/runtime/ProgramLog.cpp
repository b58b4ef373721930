#include "runtime/ProgramLog.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>
#include <new>
#include <optional>
#include <utility>

#include "Logging.h"
#include "base/LogLevels.h"
#include "base/PrintableText.h"
#include "framework/ProgramMap.h"
#include "runtime/LineCutter.h"

namespace host {
namespace {

// What a pipe holds: more is only there if the program goes on writing.
constexpr std::size_t kLeft = std::size_t{64} * 1024;  // bytes

constexpr auto kNever = LogLimitBySource::Clock::time_point::max();

// A line may begin with "<N>", N its priority as for a system log, which has one more severe level
// than the host. Removes that.
int takeLevel(std::string_view& line) {
  const bool given =
      line.size() > 2 && line[0] == '<' && line[2] == '>' && '0' <= line[1] && line[1] <= '7';
  if (!given) return kLogNote;
  const int level = std::max(line[1] - '0' - 1, 0);
  line.remove_prefix(3);
  return level;
}

// The log shows the name anyway.
void dropName(std::string_view& line, const std::string& program) {
  const std::string start = program + ": ";
  if (line.starts_with(start)) line.remove_prefix(start.size());
}

// For ApplicationLog, which keeps entries without a place in the code apart.
void logOutput(const std::string& program, int level, std::string_view line) {
  logAppUni(program.c_str(), level, nullptr, 0, "%s", escapedLine(line).c_str());
}

}  // namespace

// The host's end of a pipe.
class ProgramLog::Pipe {
 public:
  Pipe(Descriptor end, std::string program)
      : m_end(std::move(end)), m_program(std::move(program)) {}

  [[nodiscard]] const std::string& program() const { return m_program; }
  [[nodiscard]] bool watched() const { return m_watch.has_value(); }

  void watch(IoLoop& loop, std::function<void()> readable) {
    m_watch.emplace(loop, m_end.get(), EPOLLIN,
                    [readable = std::move(readable)](std::uint32_t) { readable(); });
  }

  // The number of bytes that were there. 0: none is there, or no more will come, see ended().
  std::size_t read(const LineCutter::Take& take) {
    std::array<char, kRead> part;
    const ssize_t got = ::read(m_end.get(), part.data(), part.size());
    m_ended = got == 0 || (got < 0 && errno != EAGAIN && errno != EINTR);
    const std::size_t size = got > 0 ? static_cast<std::size_t>(got) : 0;
    m_lines.add({part.data(), size}, take);
    if (m_ended) m_lines.finish(take);
    return size;
  }
  [[nodiscard]] bool ended() const { return m_ended; }

  void readRest(const LineCutter::Take& take) {
    std::size_t left = kLeft;
    for (std::size_t got = 1; got > 0 && left > 0; left -= std::min(left, got)) got = read(take);
    if (!m_ended) m_lines.finish(take);
  }

 private:
  const Descriptor m_end;
  const std::string m_program;
  LineCutter m_lines;
  bool m_ended = false;
  std::optional<IoLoop::Watch> m_watch;
};

ProgramLog::ProgramLog(IoLoop& loop, LogLimitBySource limit)
    : m_loop(loop),
      m_watchNew(std::make_shared<IoLoop::Task>([this] { watchNew(); })),
      m_limit(std::move(limit)),
      m_summary(loop, [this] { logSuppressed(LogLimitBySource::Clock::now()); }) {
  ProgramMap::instance().setOutput([this](const std::string& program) { return open(program); });
}

ProgramLog::~ProgramLog() {
  ProgramMap::instance().setOutput({});
  const MutexLock lock(m_mutex);
  try {
    for (Pipe& pipe : m_pipes) {
      pipe.readRest([&](std::string_view line) { log(pipe.program(), line); });
    }
    logSuppressed(kNever);
  } catch (const std::exception&) {
    // No memory: the lines are lost.
  }
}

Descriptor ProgramLog::open(const std::string& program) try {
  const MutexLock lock(m_mutex);
  if (m_pipes.size() == kMostPipes) {
    errno = EMFILE;
    return {};
  }
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return {};
  Descriptor own(ends[0]);
  Descriptor programs(ends[1]);
  if (::fcntl(own.get(), F_SETFL, O_NONBLOCK) != 0) return {};  // the program's end blocks
  m_pipes.emplace_back(std::move(own), program);
  m_loop.post(m_watchNew);
  return programs;
} catch (const std::bad_alloc&) {
  errno = ENOMEM;
  return {};
}

void ProgramLog::watchNew() {
  const MutexLock lock(m_mutex);
  m_pipes.remove_if([this](Pipe& pipe) {
    try {
      if (!pipe.watched()) pipe.watch(m_loop, [this, &pipe] { serve(pipe); });
    } catch (const std::exception& error) {
      logAppUni("clockhost", kLogWarning, __FILE__, __LINE__,
                "the output of \"%s\" is no longer read: %s", pipe.program().c_str(), error.what());
      return true;
    }
    return false;
  });
}

void ProgramLog::serve(Pipe& pipe) {
  pipe.read([&](std::string_view line) { log(pipe.program(), line); });
  if (!pipe.ended()) return;
  const MutexLock lock(m_mutex);
  m_pipes.remove_if([&](const Pipe& each) { return &each == &pipe; });
}

void ProgramLog::log(const std::string& program, std::string_view line) {
  const int level = takeLevel(line);
  dropName(line, program);
  if (line.empty() || !loggingOnAppUni(program.c_str(), level)) return;
  const auto now = LogLimitBySource::Clock::now();
  logSuppressed(now);
  const bool allReported = m_limit.nextSummary() == kNever;
  const LogEntry source{.component = program};
  if (m_limit.admits(source, now)) return logOutput(program, level, line);
  if (allReported) m_summary.start(m_limit.nextSummary() - now);
}

void ProgramLog::logSuppressed(LogLimitBySource::Clock::time_point now) {
  const auto summaries = m_limit.summaries(now);
  for (const LogEntry& summary : summaries) {
    logAppUni("clockhost", summary.level, __FILE__, __LINE__, "%s", summary.text.c_str());
  }
  if (!summaries.empty() && m_limit.nextSummary() != kNever) {
    m_summary.start(m_limit.nextSummary() - now);
  }
}

}  // namespace host
