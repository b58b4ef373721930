#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
#include <string>

namespace host {

// Decides which attempts the security log counts in an earlier record instead of writing a new one,
// so that no source can flood the log with attempts that need no sync. A source is a user with all
// of that user's processes, so a shell loop is one source. Unless the source was idle for kIdle, an
// attempt is counted if it equals the previous one; a cheap attempt also if kOwnRecords of them
// already have their own records.
// Owner: the security log. Thread: one at a time.
class Repeats {
 public:
  using Time = std::chrono::steady_clock::time_point;

  static constexpr std::chrono::seconds kIdle{60};  // afterwards a source gets new records
  static constexpr int kOwnRecords = 20;            // enough to show what a source tries
  static constexpr std::size_t kSources = 64;       // remembered; the least recent one is dropped

  struct Attempt {
    std::string user;
    bool failure;
    int code;             // of the event; each is counted separately
    bool cheap;           // needs no sync: a refusal, or an event that the host records
    std::string content;  // all other fields in which two attempts of a user can differ
  };

  // The number of the record that must count the attempt; 0: write a new record.
  [[nodiscard]] std::int64_t earlier(const Attempt& attempt, Time now);

  // The attempt was written as a new record with this number.
  void recorded(Attempt attempt, std::int64_t number, Time now);

  // The record was deleted and can count no more attempts.
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
