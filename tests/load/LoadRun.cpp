#include "load/LoadRun.h"

#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <deque>
#include <fstream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

#include "integration/RestartableHost.h"
#include "load/Callers.h"
#include "load/ScriptedClock.h"
#include "load/Subscriber.h"
#include "remote/ClientLimits.h"
#include "remote/RemoteClient.h"
#include "support/Interruption.h"

namespace load {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kRegistrations = host::kMostRegistrations;  // of the stuck and the slow subscriber
// Bytes sent to the stuck subscriber before the others connect.
constexpr std::uint64_t kFilledBefore = 896 * 1024;
constexpr std::uint64_t kMovesBetweenReads = 50;  // of the slow subscriber, so that its queue fills
// A slow machine may need this much longer than the run to fill the stuck subscriber's queue.
constexpr std::chrono::seconds kUntilDrop(40);
constexpr std::chrono::seconds kAfterDrop(2);  // at least, to measure latencies and memory

// Two descriptors for each client, and some of the host's and the test's own; the host inherits the
// limit.
void allowDescriptors(rlim_t count) {
  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = std::min(limit.rlim_max, std::max(limit.rlim_cur, count));
  ::setrlimit(RLIMIT_NOFILE, &limit);
}

// KiB of a process's own memory. Counted page by page: the number in its status may be off by
// hundreds of KiB.
std::uint64_t memoryOf(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/smaps_rollup");
  std::string word;
  while (status >> word && word != "Anonymous:") continue;
  std::uint64_t size = 0;
  status >> size;
  return size;
}

class LoadRun {
 public:
  explicit LoadRun(const Size& size) : m_size(size) {
    allowDescriptors(2 * (size.subscribers + static_cast<std::size_t>(size.callers)) + 100);
    m_host.start();
    m_operator = m_host.connectControl();
  }

  LoadFigures run() {
    connectAll();
    while (goesOn()) {
      move();
      if (Clock::now() - m_begin > m_size.warmUp && !m_stuck) measureMemory();
      if (support::Interruption::signal() != 0) throw std::runtime_error("stopped by a signal");
    }
    if (m_stuck) throw std::runtime_error("the stuck subscriber was not dropped");
    m_figures.afterDrop = takeService();
    m_slow->expect(m_unread);
    for (Subscriber& subscriber : m_subscribers) subscriber.expectNoMore();
    disconnectAll();
    checkLog(m_host.end(SIGTERM));
    return m_figures;
  }

 private:
  // The stuck subscriber connects first: its queue is nearly full when the others connect, so that
  // it is dropped after seconds and not after a minute.
  void connectAll() {
    m_stuck.emplace(m_host.socket(), kRegistrations);
    while (m_sentToStuck < kFilledBefore) perform(m_clock.next());
    while (m_subscribers.size() < m_size.subscribers) m_subscribers.emplace_back(m_host.socket());
    m_slow.emplace(m_host.socket(), kRegistrations);
    m_callers.emplace(m_host.socket(), m_size.callers);
    m_begin = Clock::now();
  }

  void disconnectAll() {
    m_callers.reset();
    m_subscribers.clear();
    m_slow.reset();
    m_operator.reset();
  }

  [[nodiscard]] bool goesOn() const {
    const auto now = Clock::now();
    const auto end = m_begin + m_size.duration;
    return now < end || now < (m_stuck ? end + kUntilDrop : m_dropped + kAfterDrop);
  }

  void perform(const Move& move) {
    for (const std::string& request : move.requests) {
      const auto reply = m_operator->control(request, kAnswerLimit);
      if (!reply || reply->find(R"({"ok":true)") != 0) {
        throw std::runtime_error("refused: " + request);
      }
    }
    for (const std::string& event : move.events) {
      m_sentToStuck += kRegistrations * (host::kFrameHeaderSize + event.size());
    }
  }

  void move() {
    const Move move = m_clock.next();
    const auto begin = Clock::now();
    perform(move);
    for (Subscriber& subscriber : m_subscribers) subscriber.expect(move.events);
    m_latencies.add(Clock::now() - begin);
    m_figures.events += move.events.size();
    if (m_stuck && m_stuck->isDisconnected()) recordDrop();
    m_unread.insert(m_unread.end(), move.events.begin(), move.events.end());
    if (m_clock.count() % kMovesBetweenReads == 0) m_slow->expect(std::exchange(m_unread, {}));
  }

  // Only bytes that the host queued count, not those that the kernel had accepted.
  void recordDrop() {
    m_figures.stuckQueued = m_sentToStuck - m_stuck->drain();
    m_stuck.reset();
    m_dropped = Clock::now();
    m_figures.whileStuck = takeService();
  }

  // The latencies since the last call.
  Service takeService() { return {std::exchange(m_latencies, {}), m_callers->take()}; }

  void measureMemory() {
    const std::uint64_t size = memoryOf(m_host.program().id());
    m_figures.mostMemory = std::max(m_figures.mostMemory, size);
    m_figures.leastMemory =
        m_figures.leastMemory == 0 ? size : std::min(m_figures.leastMemory, size);
  }

  // The log has one line, about the stuck subscriber.
  static void checkLog(const integration::Outcome& outcome) {
    const auto lines = std::count(outcome.err.begin(), outcome.err.end(), '\n');
    const bool dropped = outcome.err.find("does not read its messages") != std::string::npos;
    if (outcome.status == 0 && lines == 1 && dropped) return;
    throw std::runtime_error("the host ended with status " + std::to_string(outcome.status) +
                             " and this log: " + outcome.err);
  }

  const Size m_size;
  integration::RestartableHost m_host{CLOCKHOST, {"--log-level", "3"}};
  std::unique_ptr<host::RemoteClient> m_operator;
  ScriptedClock m_clock;
  std::deque<Subscriber> m_subscribers;
  std::optional<Subscriber> m_slow;
  std::vector<std::string> m_unread;  // events for the slow subscriber
  std::optional<Subscriber> m_stuck;
  std::uint64_t m_sentToStuck = 0;  // bytes
  std::optional<Callers> m_callers;
  Latencies m_latencies;  // of moves since the stuck subscriber connected or was dropped
  LoadFigures m_figures;
  Clock::time_point m_begin;
  Clock::time_point m_dropped;  // the stuck subscriber
};

}  // namespace

LoadFigures loadAHost(const Size& size) {
  return LoadRun(size).run();
}

}  // namespace load
