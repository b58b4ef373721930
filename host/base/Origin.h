#pragma once

#include <string>

namespace host {

// The process for which the calling thread works: the client at the other end of a socket, as the
// kernel identifies it, "uid 1000, pid 4711". Empty: the device itself.
[[nodiscard]] const std::string& originHere();

// The user of an origin, "uid 1000". Another text is returned whole.
[[nodiscard]] std::string userOf(const std::string& origin);

// Sets the origin of the calling thread for its lifetime. Scopes nest.
// REQUIRES: the text outlives the scope, which ends on the same thread.
class OriginScope {
 public:
  explicit OriginScope(const std::string& origin);
  ~OriginScope();
  OriginScope(const OriginScope&) = delete;
  OriginScope& operator=(const OriginScope&) = delete;

 private:
  const std::string* const m_before;
};

}  // namespace host
