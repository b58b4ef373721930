#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>

#include "base/Mutex.h"

class Executable;

namespace host {

// Wall time, uptime and timer expiry out of one object. Virtual time never passes an armed timer
// that has not been delivered, and stands while a timer's owner is called.
// Owner: whoever runs the framework. Thread: any; runDue, advance and fireNext are the framework
// thread's, and not to be called from an expiry.
// Failure: what an owner throws leaves the driving call; the clock goes on.
class VirtualClock {
 public:
  using Nanoseconds = std::chrono::nanoseconds;
  using RealClock = std::function<Nanoseconds()>;
  // virtualTime: starts paused at 1970-01-01. system: wall time and uptime (since boot) of the
  // machine, speed fixed at 1; setting it takes the privilege.
  enum class Source { virtualTime, system };

  // The last wall time that can be set (the year 2223).
  static constexpr Nanoseconds kLastWall = std::chrono::seconds{8'000'000'000};
  // Where virtual time ends (after 200 years): it stays there, and no timer expires later.
  static constexpr Nanoseconds kLastUptime = std::chrono::hours{24 * 365 * 200};

  explicit VirtualClock(Source source = Source::virtualTime);
  // Virtual time that takes the passing of real time from `real`, which never goes back.
  explicit VirtualClock(RealClock real);
  VirtualClock(const VirtualClock&) = delete;
  VirtualClock& operator=(const VirtualClock&) = delete;

  [[nodiscard]] Nanoseconds wall() const;    // since 1970-01-01 UTC
  [[nodiscard]] Nanoseconds uptime() const;  // since construction; system: since boot

  // The clock jumps: uptime and timers are left alone. False, with errno: EINVAL outside
  // 0-kLastWall, EPERM without the privilege.
  [[nodiscard]] bool setWall(Nanoseconds wall);

  // Virtual seconds for each real one. 0: paused. Infinity: straight from timer to timer.
  [[nodiscard]] double speed() const;
  // Throws std::invalid_argument: negative, not a number, other than 1 with the system's clock.
  void setSpeed(double speed);
  // How often the speed was set, also to the value that it had.
  [[nodiscard]] std::uint64_t speedSettings() const;
  [[nodiscard]] Source source() const { return m_source; }

  // One-shot timers; ids start at 1 and only grow. Equal expiries come in order of creation.
  // 0 for a negative period. The owner outlives its timers.
  [[nodiscard]] int createTimer(Executable& owner, Nanoseconds period);
  // Arms the timer for its full period from now. An unknown id is ignored, here and below.
  void startTimer(int timer);
  void stopTimer(int timer);
  // After these two no delivery begins. One that has begun is not waited for.
  void cancelTimer(int timer);
  void deleteTimer(int timer);

  [[nodiscard]] std::optional<Nanoseconds> nextExpiry() const;  // uptime of the earliest one
  // Real time to wait for it at the present speed; empty: there is no need to wake.
  [[nodiscard]] std::optional<Nanoseconds> realTimeToNextExpiry() const;
  [[nodiscard]] std::size_t armedTimers() const;
  [[nodiscard]] std::uint64_t expiriesDelivered() const;

  // Called, on any thread and with no lock held, when the earliest expiry or the way to it has
  // changed; not from inside runDue, whose caller asks afterwards anyway. One listener; an empty
  // one ends it.
  void onScheduleChange(std::function<void()> listener);

  // Asked after each expiry; false: that was enough for now.
  using GoOn = std::function<bool()>;

  // Delivers at most `most` of the expiries that are due, each at its own instant. Returns how
  // many.
  std::size_t runDue(std::size_t most, const GoOn& goOn = {});

  // Time passes: each timer on the way expires at its own instant; then time is there. Throws
  // std::invalid_argument for a negative duration, std::logic_error with the system's clock.
  void advance(Nanoseconds duration);

  // The same up to an uptime, and as far as `goOn` lets it. True when time is there. Throws
  // std::logic_error with the system's clock.
  [[nodiscard]] bool advanceTo(Nanoseconds target, const GoOn& goOn);

  // Passes the time to the next expiry and delivers that one. False when none is armed. Throws as
  // advance does.
  bool fireNext();

 private:
  struct Timer {
    Executable* owner;
    Nanoseconds period;
    std::optional<Nanoseconds> expiry;  // when armed
  };
  class Driving;

  Nanoseconds unhinderedNow() const CLOCK_REQUIRES(m_mutex);
  Nanoseconds now() const CLOCK_REQUIRES(m_mutex);
  std::optional<Nanoseconds> earliest() const CLOCK_REQUIRES(m_mutex);
  void anchorAt(Nanoseconds uptime) CLOCK_REQUIRES(m_mutex);
  void disarm(int id, Timer& timer) CLOCK_REQUIRES(m_mutex);
  Executable* takeDue(Nanoseconds limit, int& id) CLOCK_REQUIRES(m_mutex);

  bool deliver(std::optional<Nanoseconds> limit);
  template <class Step>
  void change(Step step);
  void tellScheduleChange();
  void requireVirtual() const;

  const Source m_source;
  const RealClock m_real;

  mutable Mutex m_mutex;  // never held while an owner or listener runs
  Nanoseconds m_wallAtZero CLOCK_GUARDED_BY(m_mutex){0};    // wall time at uptime 0
  Nanoseconds m_anchorUptime CLOCK_GUARDED_BY(m_mutex){0};  // virtual uptime at ...
  Nanoseconds m_anchorReal CLOCK_GUARDED_BY(m_mutex);       // ... this reading of m_real
  double m_speed CLOCK_GUARDED_BY(m_mutex) = 0;
  std::uint64_t m_speedSettings CLOCK_GUARDED_BY(m_mutex) = 0;
  std::optional<Nanoseconds> m_standing
      CLOCK_GUARDED_BY(m_mutex);  // where time stands while timers are delivered
  bool m_driving CLOCK_GUARDED_BY(m_mutex) = false;
  int m_lastId CLOCK_GUARDED_BY(m_mutex) = 0;
  std::uint64_t m_delivered CLOCK_GUARDED_BY(m_mutex) = 0;
  std::unordered_map<int, Timer> m_timers CLOCK_GUARDED_BY(m_mutex);
  std::set<std::pair<Nanoseconds, int>> m_armed CLOCK_GUARDED_BY(m_mutex);  // expiry, then id
  std::shared_ptr<const std::function<void()>> m_listener CLOCK_GUARDED_BY(m_mutex);
};

// What the POSIX time calls of this process read. REQUIRES: one is set.
[[nodiscard]] VirtualClock& processClock();

// Null: the POSIX calls read the machine's clock, and never set it. The clock stays where it is
// until it is taken back, which happens when no thread is in a time call.
void setProcessClock(VirtualClock* clock);

// For what must work with or without one, as the log does.
[[nodiscard]] VirtualClock* processClockIfAny() noexcept;

}  // namespace host
