#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>

#include "base/Mutex.h"

namespace host {

// The names for which no address was found a while ago. Whoever asks for one waits, and a name
// server that is silent is mostly silent for longer. Owner: the process. Thread: any.
class FailedLookups {
 public:
  using Instant = std::chrono::steady_clock::time_point;

  // Short enough that a person who has mended the network need not restart anything.
  static constexpr std::chrono::seconds kKept{60};
  // More names than a telephone has servers; beyond it the oldest is forgotten.
  static constexpr std::size_t kMost = 64;

  // Whether the name is not to be asked for yet.
  [[nodiscard]] bool holds(const std::string& name, Instant now) const;

  // Whether a name got no answer in the full time a while ago. The next one would mostly get none
  // either.
  [[nodiscard]] bool isSilent(Instant now) const;

  // Remembers a failure. True: it is the first one since an address was found, so say it.
  [[nodiscard]] bool add(const std::string& name, Instant now);

  // It got no answer, although it was waited for in full. Nothing when an answer came meanwhile.
  void setUnanswered(const std::string& name);

  // A name server answered, in time or late, and be it that there is no such name.
  void setAnswered(const std::string& name);

  // An address was found.
  void forget(const std::string& name);

  // The network is another one now: each name may be asked for again. A server that was silent
  // still counts as silent, so that asking again and again does not wait again and again.
  void allowAll();

  // As if nothing had failed yet. For tests.
  void forgetAll();

 private:
  struct Failure {
    Instant last;
    bool answered = false;              // since then
    bool allowed = false;               // to be asked for again
    std::optional<Instant> unanswered;  // when it was asked for and waited for in full
  };

  mutable Mutex m_mutex;
  std::map<std::string, Failure> m_failed CLOCK_GUARDED_BY(m_mutex);
};

// Those of this process. Never destroyed: a lookup may end after everything else.
[[nodiscard]] FailedLookups& failedLookups();

}  // namespace host
