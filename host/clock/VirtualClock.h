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

// Wall time, uptime and timers in one object. Virtual time does not pass an armed timer before it
// is delivered, and stands still while a timer's owner runs. Owner: the framework. Thread: any; but
// only the framework thread calls runDue, advance, advanceTo and fireNext, and not from an expiry.
// Failure: an owner's exception leaves the call that delivered its timer; the clock keeps working.
class VirtualClock {
 public:
  using Nanoseconds = std::chrono::nanoseconds;
  using RealClock = std::function<Nanoseconds()>;
  // virtualTime: starts paused at 1970-01-01. system: wall time and uptime (since boot) of the
  // machine, speed fixed at 1; setting it needs the privilege.
  enum class Source { virtualTime, system };

  // The last wall time that can be set (the year 2223).
  static constexpr Nanoseconds kLastWall = std::chrono::seconds{8'000'000'000};
  // Where virtual time ends (after 200 years): it stays there, and no timer expires later.
  static constexpr Nanoseconds kLastUptime = std::chrono::hours{24 * 365 * 200};

  explicit VirtualClock(Source source = Source::virtualTime);
  // Virtual time that runs on `real`, which must not go back.
  explicit VirtualClock(RealClock real);
  VirtualClock(const VirtualClock&) = delete;
  VirtualClock& operator=(const VirtualClock&) = delete;

  [[nodiscard]] Nanoseconds wall() const;    // since 1970-01-01 UTC
  [[nodiscard]] Nanoseconds uptime() const;  // since construction; system: since boot

  // Both at one instant. due: time stands at a timer that is due and not delivered.
  struct Reading {
    Nanoseconds wall{0};
    Nanoseconds uptime{0};
    bool due = false;

    // Its uptime; with a timer due, just before that timer's instant.
    [[nodiscard]] Nanoseconds moment() const;
  };
  [[nodiscard]] Reading reading() const;

  // The moment at which this thread first set the wall clock or started a timer after
  // forgetActs(): a request takes effect there.
  [[nodiscard]] static std::optional<Nanoseconds> firstAct();
  static void forgetActs();

  // Who sets the wall clock: the operator; the service from its saved time, from a call's seconds
  // or from a time and date given by hand; the NTP client; another program of the machine.
  enum class Setter { jump, savedTime, seconds, hand, timeServer, program };

  // Makes the clock jump: uptime and timers stay as they are. False, with errno: EINVAL outside
  // 0-kLastWall, EPERM without the privilege.
  [[nodiscard]] bool setWall(Nanoseconds wall, Setter setter = Setter::jump);

  // What a telephone on this clock shows: the wall time, until it is set by hand. From then on it
  // follows the uptime. A telephone that restarts gets a new clock.
  [[nodiscard]] Nanoseconds shown() const;
  [[nodiscard]] bool setByHand() const;

  // Called after each setWall, on its thread and without a lock held. from: the wall time before;
  // at a set by hand, what was shown. There is one listener; an empty one removes it. It must not
  // throw.
  using WallListener = std::function<void(Nanoseconds from, Nanoseconds to, Setter setter)>;
  void onWallSet(WallListener listener);

  // Virtual seconds per real second. 0: paused. Infinity: time jumps from timer to timer.
  [[nodiscard]] double speed() const;
  // Throws std::invalid_argument: negative, not a number, other than 1 with the system's clock.
  void setSpeed(double speed);
  // How often the speed was set, including to the value that it already had.
  [[nodiscard]] std::uint64_t speedSettings() const;
  [[nodiscard]] Source source() const { return m_source; }

  // Creates a stopped one-shot timer. Ids start at 1 and are not reused. Timers due at the same
  // instant are delivered in order of creation. 0 for a negative period. The owner outlives its
  // timers.
  [[nodiscard]] int createTimer(Executable& owner, Nanoseconds period);
  // Arms the timer for its full period from now. An unknown id is ignored, here and below.
  void startTimer(int timer);
  void stopTimer(int timer);
  // After these two, no delivery of the timer begins. They do not wait for one that has begun.
  void cancelTimer(int timer);
  void deleteTimer(int timer);

  [[nodiscard]] std::optional<Nanoseconds> expiryOf(int timer) const;  // uptime; empty: not armed
  [[nodiscard]] std::optional<Nanoseconds> nextExpiry() const;         // uptime of the earliest one
  // Real time until then at the current speed; empty: nothing to wait for.
  [[nodiscard]] std::optional<Nanoseconds> realTimeToNextExpiry() const;
  [[nodiscard]] std::size_t armedTimers() const;
  [[nodiscard]] std::uint64_t expiriesDelivered() const;

  // Calls the listener, on any thread and without a lock held, when the earliest expiry or the real
  // time until then changes; but not from runDue, whose caller checks afterwards anyway. There is
  // one listener; an empty one removes it.
  void onScheduleChange(std::function<void()> listener);

  // Called after each delivery; false stops.
  using GoOn = std::function<bool()>;

  // Delivers at most `most` due timers, each at its own instant. Returns how many.
  std::size_t runDue(std::size_t most, const GoOn& goOn = {});

  // Advances by `duration`, delivering each due timer at its own instant. Throws
  // std::invalid_argument for a negative duration, std::logic_error with the system's clock.
  void advance(Nanoseconds duration);

  // The same up to an uptime, or until `goOn` returns false. True when the uptime is reached.
  // Throws std::logic_error with the system's clock.
  [[nodiscard]] bool advanceTo(Nanoseconds target, const GoOn& goOn);

  // Advances to the next expiry and delivers that timer alone. False when none is armed. Throws
  // std::logic_error with the system's clock.
  bool fireNext();

 private:
  struct Timer {
    Executable* owner;
    Nanoseconds period;
    std::optional<Nanoseconds> expiry;  // when armed
  };
  class Driving;

  Nanoseconds uptimeWithoutTimers() const CLOCK_REQUIRES(m_mutex);
  [[nodiscard]] Reading readingNow() const CLOCK_REQUIRES(m_mutex);
  void noteAct() const CLOCK_REQUIRES(m_mutex);
  Nanoseconds now() const CLOCK_REQUIRES(m_mutex);
  std::optional<Nanoseconds> earliest() const CLOCK_REQUIRES(m_mutex);
  void anchorAt(Nanoseconds uptime) CLOCK_REQUIRES(m_mutex);
  void disarm(int id, Timer& timer) CLOCK_REQUIRES(m_mutex);
  Executable* takeDue(Nanoseconds limit, int& id) CLOCK_REQUIRES(m_mutex);

  bool deliver(std::optional<Nanoseconds> limit);
  template <class Step>
  void change(Step step);
  void callListener();
  void requireVirtual() const;

  const Source m_source;
  const RealClock m_real;

  mutable Mutex m_mutex;  // never held while an owner or listener runs
  Nanoseconds m_wallAtZero CLOCK_GUARDED_BY(m_mutex){0};              // wall time at uptime 0
  std::optional<Nanoseconds> m_handAtZero CLOCK_GUARDED_BY(m_mutex);  // of a time set by hand
  Nanoseconds m_anchorUptime CLOCK_GUARDED_BY(m_mutex){0};  // virtual uptime at m_anchorReal
  Nanoseconds m_anchorReal CLOCK_GUARDED_BY(m_mutex);       // a reading of m_real
  double m_speed CLOCK_GUARDED_BY(m_mutex) = 0;
  std::uint64_t m_speedSettings CLOCK_GUARDED_BY(m_mutex) = 0;
  // The uptime at which time stands still while timers are delivered.
  std::optional<Nanoseconds> m_standing CLOCK_GUARDED_BY(m_mutex);
  bool m_driving CLOCK_GUARDED_BY(m_mutex) = false;
  int m_lastId CLOCK_GUARDED_BY(m_mutex) = 0;
  std::uint64_t m_delivered CLOCK_GUARDED_BY(m_mutex) = 0;
  std::unordered_map<int, Timer> m_timers CLOCK_GUARDED_BY(m_mutex);
  std::set<std::pair<Nanoseconds, int>> m_armed CLOCK_GUARDED_BY(m_mutex);  // expiry, then id
  std::shared_ptr<const std::function<void()>> m_listener CLOCK_GUARDED_BY(m_mutex);
  std::shared_ptr<const WallListener> m_wallListener CLOCK_GUARDED_BY(m_mutex);
};

// The clock that the POSIX time calls of this process read and set. Null, the default: they read
// the machine's clock and refuse to set it. The clock must outlive its use here; replace it only
// while no thread is in a time call.
void setProcessClock(VirtualClock* clock) noexcept;
[[nodiscard]] VirtualClock* processClock() noexcept;

// Makes a clock the process's clock while this object lives. Owner: a scope, one at a time.
class ProcessClock {
 public:
  explicit ProcessClock(VirtualClock& clock) { setProcessClock(&clock); }
  ~ProcessClock() { setProcessClock(nullptr); }
  ProcessClock(const ProcessClock&) = delete;
  ProcessClock& operator=(const ProcessClock&) = delete;
};

}  // namespace host
