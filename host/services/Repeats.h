#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
#include <string>

namespace host {

// Decides which attempts the security log counts in an earlier record instead of writing a new one.
// Otherwise a user could flood the log with attempts that need no sync. A run is a user's attempts
// with the same code and outcome, from any process, each within kIdle of the previous one. An
// attempt is counted in the last record of its run
// - if it equals the run's previous attempt, or
// - if it needs no sync and the run already has kOwnRecords records.
// Owner: the security log. Thread: one at a time.
class Repeats {
 public:
  using Time = std::chrono::steady_clock::time_point;

  static constexpr std::chrono::seconds kIdle{60};  // afterwards a new run begins
  static constexpr int kOwnRecords = 20;            // enough to show what a user tries
  static constexpr std::size_t kRuns = 64;          // remembered; the least recent one is dropped

  struct Attempt {
    std::string user;
    bool failure;
    int code;             // of the event
    bool synced;          // waits for the disk, which limits its rate: an accepted set
    std::string content;  // all other fields in which two attempts of a run can differ
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
