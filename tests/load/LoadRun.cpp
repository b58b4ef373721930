#include "load/LoadRun.h"

#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <fstream>

#include "remote/RemoteClient.h"

namespace load {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kAnswerLimit(20);
constexpr int kRegistrations = 128;  // of the stuck one, so that its queue fills in a second or so
constexpr std::uint64_t kBound = 1024 * 1024;  // bytes that are queued for a client, and no more
constexpr std::uint64_t kNoticedLate =
    128 * 1024;  // bytes of a few moves, until it is seen to be gone
constexpr std::uint64_t kMovesBeforeReading = 50;  // the slow one's queue is well filled by then
constexpr std::chrono::seconds kForTheStuckOne(
    40);  // beyond the time of the run, on a slow machine

// Two descriptors for each client, with what the host and a test have besides; the host inherits
// it.
void allowDescriptors(rlim_t count) {
  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = std::min(limit.rlim_max, std::max(limit.rlim_cur, count));
  ::setrlimit(RLIMIT_NOFILE, &limit);
}

// KiB of memory of its own that a process holds.
std::uint64_t memoryOf(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  std::string word;
  while (status >> word && word != "RssAnon:") continue;
  std::uint64_t size = 0;
  status >> size;
  return size;
}

std::uint64_t sizeOf(const Move& move) {
  std::uint64_t size = 0;
  for (const std::string& event : move.events) size += host::kFrameHeaderSize + event.size();
  return size;
}

}  // namespace

LoadRun::LoadRun(const Size& size) : m_size(size), m_host(CLOCKHOST, {"--log-level", "3"}) {
  allowDescriptors(2 * (size.subscribers + static_cast<std::size_t>(size.callers)) + 100);
}

LoadRun::~LoadRun() = default;

bool LoadRun::run() {
  if (!start()) return false;
  loadUp();
  while (m_fault.empty() && goesOn()) {
    move();
    lookAtFaults();
    if (warm()) lookAtMemory();
  }
  if (m_stuck) fail("the stuck subscriber was not dropped");
  end();
  return m_fault.empty();
}

bool LoadRun::goesOn() const {
  const auto passed = Clock::now() - m_begin;
  return passed < m_size.duration || (m_stuck && passed < m_size.duration + kForTheStuckOne);
}

bool LoadRun::start() {
  m_host.launch();
  if (m_host.answers()) return true;
  fail("no host: " + m_host.program().err());
  return false;
}

void LoadRun::loadUp() {
  m_operator = m_host.connect();
  m_audience = std::make_unique<Audience>(m_host.socket(), m_size.subscribers);
  m_stuck.emplace(m_host.socket(), kRegistrations);
  m_slow.emplace(m_host.socket());
  m_callers = std::make_unique<Callers>(m_host.socket(), m_size.callers);
  m_begin = Clock::now();
}

void LoadRun::move() {
  const Move move = m_life.next();
  m_audience->announce(move.events);
  const auto begin = Clock::now();
  for (const std::string& request : move.requests) {
    const auto reply = m_operator->control(request, kAnswerLimit);
    if (!reply || reply->find(R"({"ok":true)") != 0) return fail("refused: " + request);
  }
  if (!m_audience->hasHeardAll(kAnswerLimit)) {
    const std::string fault = m_audience->fault();
    return fail(fault.empty() ? "somebody has not heard of move " + std::to_string(m_life.moves())
                              : fault);
  }
  m_heard.add(Clock::now() - begin);
  if (m_stuck) lookAtTheStuckOne(move);
  m_slow->announce(move.events);
  if (m_life.moves() % kMovesBeforeReading == 0) hearTheSlowOne();
}

void LoadRun::hearTheSlowOne() {
  const std::string fault = m_slow->hearAll(kAnswerLimit);
  if (!fault.empty()) fail(fault);
}

// What the system had taken for it does not count: the rest was queued.
void LoadRun::lookAtTheStuckOne(const Move& move) {
  m_sentToStuck += kRegistrations * sizeOf(move);
  if (!m_stuck->isHungUp()) return;
  m_figures.stuckQueued = m_sentToStuck - m_stuck->drain();
  m_stuck.reset();
  if (m_figures.stuckQueued <= kBound || m_figures.stuckQueued > kBound + kNoticedLate) {
    fail("the stuck subscriber was dropped at " + std::to_string(m_figures.stuckQueued) + " bytes");
  }
  const Latencies meanwhile = m_callers->take();
  m_figures.stuckCallP99 = meanwhile.quantile(0.99);
  m_calls.add(meanwhile);
}

bool LoadRun::warm() const {
  return Clock::now() - m_begin > m_size.warmUp && !m_stuck;
}

void LoadRun::lookAtMemory() {
  const std::uint64_t size = memoryOf(m_host.program().id());
  m_figures.mostMemory = std::max(m_figures.mostMemory, size);
  m_figures.leastMemory = m_figures.leastMemory == 0 ? size : std::min(m_figures.leastMemory, size);
  if (m_figures.mostMemory - m_figures.leastMemory > kLevel) {
    fail("the host's memory went from " + std::to_string(m_figures.leastMemory) + " KiB to " +
         std::to_string(m_figures.mostMemory));
  }
}

void LoadRun::lookAtFaults() {
  const std::string fault = m_callers->fault();
  if (!fault.empty()) fail(fault);
}

// The one line in the log is that of the stuck subscriber.
void LoadRun::end() {
  hearTheSlowOne();
  m_calls.add(m_callers->take());
  m_figures.moves = m_life.moves();
  m_figures.events = m_audience->announced();
  m_figures.heardP99 = m_heard.quantile(0.99);
  m_figures.calls = m_calls.count();
  m_figures.callP50 = m_calls.quantile(0.5);
  m_figures.callP99 = m_calls.quantile(0.99);
  m_callers.reset();
  m_audience.reset();
  m_slow.reset();
  m_operator.reset();
  const integration::Outcome outcome = m_host.end(SIGTERM);
  const auto lines = std::count(outcome.err.begin(), outcome.err.end(), '\n');
  const bool dropped = outcome.err.find("does not read what is sent to it") != std::string::npos;
  if (outcome.status != 0) fail("the host ended with status " + std::to_string(outcome.status));
  if (lines != 1 || !dropped) fail("the host's log: " + outcome.err);
}

void LoadRun::fail(const std::string& fault) {
  if (m_fault.empty()) m_fault = fault;
}

std::string toText(const Figures& figures) {
  const auto line = [](const char* name, std::uint64_t number, const char* unit) {
    return "  " + std::string(name) + ": " + std::to_string(number) + unit + "\n";
  };
  return line("moves of the clock", figures.moves, "") +
         line("events that each subscriber heard once and in order", figures.events, "") +
         line("p99 until the last subscriber has heard of a move", figures.heardP99, " us") +
         line("calls answered", figures.calls, "") + line("p50 of a call", figures.callP50, " us") +
         line("p99 of a call", figures.callP99, " us") +
         line("p99 of a call beside the stuck subscriber", figures.stuckCallP99, " us") +
         line("queued for the stuck subscriber when it was dropped", figures.stuckQueued,
              " bytes") +
         line("least memory of the host after warming up", figures.leastMemory, " KiB") +
         line("most", figures.mostMemory, " KiB");
}

}  // namespace load
