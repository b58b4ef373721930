#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
#include <string>

namespace host {

// Which attempt the security log counts in an earlier record instead of giving it one of its own.
// A source is a user, with all processes: a shell loop is one source, too. Within kQuiet its
// accepted set is counted when it is the same again, and its cheap attempts, whatever they say,
// from the kSpelledOut-th on. So no source can flood the log with what costs it no sync.
// Owner: the security log. Thread: one at a time.
class Repeats {
 public:
  using Time = std::chrono::steady_clock::time_point;

  static constexpr std::chrono::seconds kQuiet{60};  // then a source starts anew
  static constexpr int kSpelledOut = 20;             // enough to see what somebody tries
  static constexpr std::size_t kSources = 64;        // remembered; the one longest quiet goes first

  struct Attempt {
    std::string user;
    bool failure;
    int code;             // of the event; each has runs of its own
    bool cheap;           // as refusals are, and what the host itself records
    std::string content;  // all that makes it differ from others of this user
  };

  // The number of the record that the attempt is to be counted in, 0: a record of its own.
  [[nodiscard]] std::int64_t earlier(const Attempt& attempt, Time now);

  // The attempt has a record of its own, with this number.
  void spelledOut(Attempt attempt, std::int64_t number, Time now);

  // The record is gone: nothing is to be counted in it.
  void forget(std::int64_t number);

 private:
  struct Run {
    Attempt last;
    std::int64_t number;
    int records;  // spelled out
    Time time;
  };

  Run* find(const Attempt& attempt, Time now);

  std::list<Run> m_runs;  // the newest first
};

}  // namespace host
