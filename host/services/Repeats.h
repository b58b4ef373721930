#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
#include <string>

namespace host {

// Decides which attempts the security log counts in an earlier record instead of a new one, so that
// no source can flood the log with attempts that cost it no sync. A source is a user with all its
// processes, so a shell loop is one source. Unless the source was idle for kIdle, an attempt is
// counted if it equals the one before, and a cheap one also if kOwnRecords of them have records.
// Owner: the security log. Thread: one at a time.
class Repeats {
 public:
  using Time = std::chrono::steady_clock::time_point;

  static constexpr std::chrono::seconds kIdle{60};  // after that a source starts anew
  static constexpr int kOwnRecords = 20;            // enough to see what a source tries
  static constexpr std::size_t kSources = 64;       // remembered; the least recent is dropped first

  struct Attempt {
    std::string user;
    bool failure;
    int code;             // of the event; each is counted separately
    bool cheap;           // costs no sync: a refusal, or an event that the host records
    std::string content;  // all other fields that distinguish attempts of this user
  };

  // The number of the record in which to count the attempt; 0: write a new record.
  [[nodiscard]] std::int64_t earlier(const Attempt& attempt, Time now);

  // The attempt was written as a new record with this number.
  void recorded(Attempt attempt, std::int64_t number, Time now);

  // The record was deleted: nothing more can be counted in it.
  void forget(std::int64_t number);

 private:
  struct Run {
    Attempt last;
    std::int64_t number;
    int records;  // written for this run
    Time time;
  };

  Run* find(const Attempt& attempt, Time now);

  std::list<Run> m_runs;  // the newest first
};

}  // namespace host
