#pragma once

#include <chrono>
#include <iosfwd>
#include <span>
#include <string>

#include "verbs/Json.h"
#include "verbs/Verb.h"

namespace host {

struct ClockCtlOptions;
class Session;

// How long to wait for a reply without --timeout: 2 s for calls, 60 s for requests that advance the
// clock, 5 s for other control requests.
[[nodiscard]] std::chrono::milliseconds replyLimit(const Verb& verb, const Json& request);

// Carries out a verb with its arguments, and prints the answers on `out`; what is not an answer,
// such as "ready", on `err`. Thread: its caller's. Throws UsageError before anything is sent;
// NoHost; another std::exception when the host refuses or does not answer, which may leave the
// session in the middle of an answer.
void carryOut(const ClockCtlOptions& options, std::span<const std::string> words, Session& session,
              std::ostream& out, std::ostream& err);

}  // namespace host
