#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace host {

// The process for which the calling thread works: the client at the other end of a socket, as the
// kernel identifies it, "uid 1000, pid 4711". Empty: the device itself.
[[nodiscard]] std::string_view originHere();

// The user of an origin, "uid 1000". Another text is returned whole.
[[nodiscard]] std::string userOf(const std::string& origin);

// The remote call of that process within which the calling thread works: the id of its frame. 0:
// none.
[[nodiscard]] std::uint32_t callHere();

// Sets the origin of the calling thread for its lifetime, and the call. Scopes nest.
// REQUIRES: the text outlives the scope, which ends on the same thread.
class OriginScope {
 public:
  explicit OriginScope(const std::string& origin, std::uint32_t call = 0);
  ~OriginScope();
  OriginScope(const OriginScope&) = delete;
  OriginScope& operator=(const OriginScope&) = delete;

 private:
  const std::string* const m_before;
  const std::uint32_t m_callBefore;
};

// What the calling thread does that may change the clock: "set" and the key, "call" and the method.
struct Cause {
  std::string_view act;  // empty: nothing that is known
  std::string_view object;
};
[[nodiscard]] Cause causeHere();

// Sets the cause of the calling thread for its lifetime. Scopes nest.
// REQUIRES: the texts outlive the scope, which ends on the same thread.
class CauseScope {
 public:
  explicit CauseScope(Cause cause);
  ~CauseScope();
  CauseScope(const CauseScope&) = delete;
  CauseScope& operator=(const CauseScope&) = delete;

 private:
  const Cause m_before;
};

// Whether the calling thread asks the service something that the host itself wants to know, as for
// `status`. What the service logs about that in detail is dropped: it would push out the rest.
[[nodiscard]] bool asksHere();

// Says so for its lifetime. REQUIRES: the scope ends on the same thread.
class QuestionScope {
 public:
  QuestionScope();
  ~QuestionScope();
  QuestionScope(const QuestionScope&) = delete;
  QuestionScope& operator=(const QuestionScope&) = delete;

 private:
  const bool m_before;
};

}  // namespace host
