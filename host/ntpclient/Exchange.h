#pragma once

#include <chrono>
#include <functional>

#include "ntpclient/Packet.h"
#include "ntpclient/ParentWatch.h"

namespace host::ntp {

// The result of one request.
struct Outcome {
  enum class Kind { time, denied, rateExceeded, nothing, parentGone };
  Kind kind;
  std::chrono::nanoseconds time{0};  // the server's at `at`, since 1970-01-01 UTC
  std::chrono::steady_clock::time_point at{};
};

// Sends one request and waits for a usable answer until the limit. Ignores other answers, and calls
// `refused` once for each reason. server: a numeric address of `family`. Failure: an outcome of
// nothing.
[[nodiscard]] Outcome ask(const char* server, int family, const char* port,
                          std::chrono::milliseconds limit, const ParentWatch& watch,
                          const std::function<void(Verdict)>& refused);

}  // namespace host::ntp
