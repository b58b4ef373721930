#pragma once

#include <chrono>
#include <functional>

#include "ntpclient/Packet.h"
#include "ntpclient/ParentWatch.h"

namespace host::ntp {

// What came of one request.
struct Outcome {
  enum class Kind { time, denied, rateExceeded, nothing, parentGone };
  Kind kind;
  std::chrono::nanoseconds time{0};  // of the server, since 1970-01-01 UTC, at `at`
  std::chrono::steady_clock::time_point at{};
};

// Sends one request and listens until a usable answer or the limit; answers that are not usable
// are passed over, and `refused` hears each reason once.
// server: a numeric address of `family`. Failure: an outcome of nothing.
[[nodiscard]] Outcome ask(const char* server, int family, const char* port,
                          std::chrono::milliseconds limit, const ParentWatch& watch,
                          const std::function<void(Verdict)>& refused);

}  // namespace host::ntp
