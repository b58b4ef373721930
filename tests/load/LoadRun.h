#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "integration/RestartableHost.h"
#include "load/Audience.h"
#include "load/Callers.h"
#include "load/ClockLife.h"
#include "load/SlowSubscriber.h"
#include "load/Subscriber.h"
#include "support/Sanitizers.h"

namespace host {
class RemoteClient;
}  // namespace host

namespace load {

struct Size {
  std::size_t subscribers = 500;
  int callers = 64;
  std::chrono::milliseconds duration{60'000};
  std::chrono::milliseconds warmUp{10'000};  // then memory is level
};

// What was met.
struct Figures {
  std::uint64_t moves = 0;
  std::uint64_t events = 0;    // that each subscriber has heard
  std::uint64_t heardP99 = 0;  // microseconds from the move until the last subscriber has heard
  std::uint64_t calls = 0;
  std::uint64_t callP50 = 0;  // microseconds
  std::uint64_t callP99 = 0;
  std::uint64_t stuckCallP99 = 0;  // while the stuck subscriber was there
  std::uint64_t stuckQueued = 0;   // bytes that were queued for it when it was dropped
  std::uint64_t leastMemory = 0;   // KiB of the host, after warming up
  std::uint64_t mostMemory = 0;
};

// Everybody at once against one host. Owner: a test. Failure: the first is fault().
class LoadRun {
 public:
  // How far the host's own memory may move after warming up, in KiB. A sanitizer keeps what was
  // freed.
  static constexpr bool kWatched = support::kAddressSanitizer || support::kThreadSanitizer;
  static constexpr std::uint64_t kLevel = kWatched ? 1024 * 1024 : 1024;

  explicit LoadRun(const Size& size);
  ~LoadRun();

  // True when everybody got what was due.
  bool run();

  [[nodiscard]] const std::string& fault() const { return m_fault; }
  [[nodiscard]] const Figures& figures() const { return m_figures; }

 private:
  bool start();
  [[nodiscard]] bool goesOn() const;
  void loadUp();
  void move();
  void hearTheSlowOne();
  void lookAtTheStuckOne(const Move& move);
  void lookAtMemory();
  void lookAtFaults();
  void end();
  void fail(const std::string& fault);
  [[nodiscard]] bool warm() const;

  const Size m_size;
  integration::RestartableHost m_host;
  std::unique_ptr<host::RemoteClient> m_operator;
  std::unique_ptr<Audience> m_audience;
  std::unique_ptr<Callers> m_callers;
  std::optional<SlowSubscriber> m_slow;
  std::optional<Subscriber> m_stuck;
  std::uint64_t m_sentToStuck = 0;  // bytes
  ClockLife m_life;
  Latencies m_heard;
  Latencies m_calls;
  Figures m_figures;
  std::string m_fault;
  std::chrono::steady_clock::time_point m_begin;
};

// One line for each figure.
[[nodiscard]] std::string toText(const Figures& figures);

}  // namespace load
