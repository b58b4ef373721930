#include "services/Repeats.h"

#include <algorithm>
#include <utility>

namespace host {

Repeats::Run* Repeats::find(const Attempt& attempt, Time now) {
  const auto run = std::find_if(m_runs.begin(), m_runs.end(), [&](const Run& known) {
    return known.last.failure == attempt.failure && known.last.code == attempt.code &&
           known.last.user == attempt.user;
  });
  if (run == m_runs.end()) return nullptr;
  m_runs.splice(m_runs.begin(), m_runs, run);
  if (now - run->time <= kIdle) return &*run;
  m_runs.pop_front();
  return nullptr;
}

std::int64_t Repeats::earlier(const Attempt& attempt, Time now) {
  Run* const run = find(attempt, now);
  if (run == nullptr) return 0;
  const bool same = attempt.content == run->last.content;
  if (!same && (attempt.synced || run->records < kOwnRecords)) return 0;
  run->time = now;
  return run->number;
}

void Repeats::recorded(Attempt attempt, std::int64_t number, Time now) {
  if (Run* const run = find(attempt, now)) {
    *run = {std::move(attempt), number, run->records + 1, now};
    return;
  }
  m_runs.push_front({std::move(attempt), number, 1, now});
  if (m_runs.size() > kRuns) m_runs.pop_back();
}

void Repeats::forget(std::int64_t number) {
  m_runs.remove_if([&](const Run& run) { return run.number == number; });
}

}  // namespace host
