#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>

#include "base/Mutex.h"

namespace host {

// The names whose lookups failed recently. They are not looked up again for a while, because a
// lookup blocks its caller and a silent name server usually stays silent. Owner: the process.
// Thread: any.
class FailedLookups {
 public:
  using Instant = std::chrono::steady_clock::time_point;

  // Short enough that no restart is needed after the network is repaired.
  static constexpr std::chrono::seconds kKept{60};
  // More names than a telephone has servers. Beyond it the oldest is dropped.
  static constexpr std::size_t kMost = 64;

  // Whether the name must not be looked up yet.
  [[nodiscard]] bool holds(const std::string& name, Instant now) const;

  // Whether a name recently got no answer within a full wait.
  [[nodiscard]] bool isSilent(Instant now) const;

  // Records a failure. True: it is the first one since an address was found, so it is to be logged.
  [[nodiscard]] bool add(const std::string& name, Instant now);

  // The name got no answer within a full wait. No effect if an answer has come meanwhile.
  void setUnanswered(const std::string& name);

  // A name server answered, in time or late, possibly that there is no such name.
  void setAnswered(const std::string& name);

  // An address was found.
  void forget(const std::string& name);

  // The network has changed: each name may be looked up again. A silent server still counts as
  // silent, so that repeated changes do not repeat full waits.
  void allowAll();

  // Removes all records. For tests.
  void forgetAll();

 private:
  struct Failure {
    Instant last;
    bool answered = false;              // since `last`
    bool allowed = false;               // may be looked up again
    std::optional<Instant> unanswered;  // when the full wait without an answer began
  };

  mutable Mutex m_mutex;
  std::map<std::string, Failure> m_failed CLOCK_GUARDED_BY(m_mutex);
};

// The instance of this process. Never destroyed: a lookup may outlive everything else.
[[nodiscard]] FailedLookups& failedLookups();

}  // namespace host
