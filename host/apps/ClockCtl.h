#pragma once

#include <chrono>
#include <filesystem>
#include <iosfwd>
#include <span>
#include <string>

#include "verbs/Json.h"

namespace host {

// How long a person who did not say waits for the reply to a request: 2 s for calls, 5 s for the
// host's own answers, 60 s where time passes.
[[nodiscard]] std::chrono::milliseconds replyLimit(const Json& request);

// The operator's command: words in, lines out. Thread: its caller's.
// Exit status: 0 done, 1 refused or no reply, 2 usage, 3 no host at the socket. Errors are one line
// on `err`.
[[nodiscard]] int runClockCtl(std::span<const std::string> words,
                              const std::filesystem::path& defaultSocket, std::ostream& out,
                              std::ostream& err);

}  // namespace host
