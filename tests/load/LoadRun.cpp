#include "load/LoadRun.h"

#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <utility>

#include "remote/ClientBounds.h"
#include "remote/RemoteClient.h"
#include "support/Interruption.h"

namespace load {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kAnswerLimit(20);
constexpr int kRegistrations = host::kMostRegistrations;  // of the stuck one
constexpr std::uint64_t kFilledBefore = 896 * 1024;  // bytes for the stuck one, before others come
constexpr std::uint64_t kMovesBeforeReading = 50;    // the slow one's queue is well filled by then
constexpr std::chrono::seconds kForTheStuckOne(
    40);  // beyond the time of the run, on a slow machine
constexpr std::chrono::seconds kAfterTheStuckOne(2);  // at least, to compare with, and for memory

// Two descriptors for each client, with what the host and a test have besides; the host inherits
// it.
void allowDescriptors(rlim_t count) {
  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = std::min(limit.rlim_max, std::max(limit.rlim_cur, count));
  ::setrlimit(RLIMIT_NOFILE, &limit);
}

// KiB of memory of its own that a process holds. Counted page by page: the number in its status may
// be off by hundreds of KiB.
std::uint64_t memoryOf(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/smaps_rollup");
  std::string word;
  while (status >> word && word != "Anonymous:") continue;
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
    if (support::Interruption::signal() != 0) fail("stopped by a signal");
  }
  if (m_stuck) fail("the stuck subscriber was not dropped");
  end();
  return m_fault.empty();
}

bool LoadRun::goesOn() const {
  const auto now = Clock::now();
  if (now < m_begin + m_size.duration) return true;
  return m_stuck ? now < m_begin + m_size.duration + kForTheStuckOne
                 : now < m_dropped + kAfterTheStuckOne;
}

bool LoadRun::start() {
  m_host.launch();
  if (m_host.answers()) return true;
  fail("no host: " + m_host.program().err());
  return false;
}

void LoadRun::loadUp() {
  m_operator = m_host.connectControl();
  fillTheStuckOne();
  m_audience = std::make_unique<Audience>(m_host.socket(), m_size.subscribers);
  m_slow.emplace(m_host.socket());
  m_callers = std::make_unique<Callers>(m_host.socket(), m_size.callers);
  m_begin = Clock::now();
}

// Most of its queue, so that the others have it beside them for a few seconds and not for a minute.
void LoadRun::fillTheStuckOne() {
  m_stuck.emplace(m_host.socket(), kRegistrations);
  while (m_fault.empty() && m_sentToStuck < kFilledBefore) {
    const Move move = m_life.next();
    perform(move);
    m_sentToStuck += kRegistrations * sizeOf(move);
  }
}

void LoadRun::perform(const Move& move) {
  for (const std::string& request : move.requests) {
    const auto reply = m_operator->control(request, kAnswerLimit);
    if (!reply || reply->find(R"({"ok":true)") != 0) return fail("refused: " + request);
  }
}

void LoadRun::move() {
  const Move move = m_life.next();
  m_audience->announce(move.events);
  const auto begin = Clock::now();
  perform(move);
  if (!m_fault.empty()) return;
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
  m_dropped = Clock::now();
  takeService(m_figures.beside);
}

// Since the last time.
void LoadRun::takeService(Service& service) {
  const Latencies heard = std::exchange(m_heard, Latencies());
  const Latencies calls = m_callers->take();
  service = {heard.count(),       heard.quantile(0.9), heard.quantile(0.99), calls.count(),
             calls.quantile(0.5), calls.quantile(0.9), calls.quantile(0.99)};
}

bool LoadRun::warm() const {
  return Clock::now() - m_begin > m_size.warmUp && !m_stuck;
}

void LoadRun::lookAtMemory() {
  const std::uint64_t size = memoryOf(m_host.program().id());
  m_figures.mostMemory = std::max(m_figures.mostMemory, size);
  m_figures.leastMemory = m_figures.leastMemory == 0 ? size : std::min(m_figures.leastMemory, size);
}

void LoadRun::lookAtFaults() {
  const std::string fault = m_callers->fault();
  if (!fault.empty()) fail(fault);
}

void LoadRun::end() {
  hearTheSlowOne();
  if (!m_stuck) takeService(m_figures.after);
  m_figures.events = m_audience->announced();
  loadOff();
  lookAtLog(m_host.end(SIGTERM));
  fail(complaintAbout(m_figures));
}

void LoadRun::loadOff() {
  m_callers.reset();
  m_audience.reset();
  m_slow.reset();
  m_operator.reset();
}

// The one line is that of the stuck subscriber.
void LoadRun::lookAtLog(const integration::Outcome& outcome) {
  const auto lines = std::count(outcome.err.begin(), outcome.err.end(), '\n');
  const bool dropped = outcome.err.find("does not read what is sent to it") != std::string::npos;
  if (outcome.status != 0) fail("the host ended with status " + std::to_string(outcome.status));
  if (lines != 1 || !dropped) fail("the host's log: " + outcome.err);
}

void LoadRun::fail(const std::string& fault) {
  if (m_fault.empty()) m_fault = fault;
}

}  // namespace load
