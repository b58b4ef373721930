#pragma once

#include <string>

namespace host {

// Who caused what the calling thread does now, as the kernel names the process at the other end of
// a socket: "uid 1000, pid 4711". Empty: the device itself.
[[nodiscard]] const std::string& originHere();

// Its user alone, "uid 1000": the same for all processes of one. Another text: the whole of it.
[[nodiscard]] std::string userOf(const std::string& origin);

// While it lives, what the calling thread does has this origin. Scopes nest.
// REQUIRES: the text outlives the scope, which ends on the thread that it began on.
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
