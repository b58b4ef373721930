#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "integration/RestartableHost.h"
#include "load/Audience.h"
#include "load/Callers.h"
#include "load/ClockLife.h"
#include "load/Figures.h"
#include "load/SlowSubscriber.h"
#include "load/Subscriber.h"

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

// Everybody at once against one host. Owner: a test. Failure: the first is fault().
class LoadRun {
 public:
  explicit LoadRun(const Size& size);
  ~LoadRun();

  // True when everybody got what was due.
  bool run();

  [[nodiscard]] const std::string& fault() const { return m_fault; }
  [[nodiscard]] const Figures& figures() const { return m_figures; }

 private:
  bool start();
  [[nodiscard]] bool goesOn() const;
  void takeService(Service& service);
  void loadUp();
  void loadOff();
  void fillTheStuckOne();
  void perform(const Move& move);
  void move();
  void hearTheSlowOne();
  void lookAtTheStuckOne(const Move& move);
  void lookAtMemory();
  void lookAtFaults();
  void lookAtLog(const integration::Outcome& outcome);
  void end();
  void fail(const std::string& fault);  // the first counts; none when empty
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
  Latencies m_heard;  // since the stuck one came or went
  Figures m_figures;
  std::string m_fault;
  std::chrono::steady_clock::time_point m_begin;
  std::chrono::steady_clock::time_point m_dropped;  // the stuck one
};

}  // namespace load
