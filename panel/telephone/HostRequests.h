#pragma once

#include <chrono>
#include <filesystem>
#include <span>
#include <stop_token>
#include <string>

#include "verbs/Json.h"

namespace panel {

// Where a running host listens.
struct HostSockets {
  std::filesystem::path call;
  std::filesystem::path control;
};

// How long a host may take for an answer that does not wait for the clock.
inline constexpr std::chrono::milliseconds kAnswerLimit = std::chrono::seconds(5);

// The JSON object that a host sent. Throws host::Error for anything else.
[[nodiscard]] host::Json objectIn(const std::string& text);

// Carries out a verb of clockctl, its words as a shell would split them, over a connection of its
// own, and returns what `clockctl --json` prints. Never writes a file. Blocks up to the verb's time
// limit; thread: any. Throws host::Error or host::UsageError, one line: wrong words, a verb that
// does not end by itself, no host, refused, no reply.
// Ends early, with host::Error, when `ending` is.
[[nodiscard]] host::Json answerOf(const HostSockets& sockets, std::span<const std::string> words,
                                  const std::stop_token& ending);

// The keys, which a page needs to know for its forms.
[[nodiscard]] host::Json catalogue();

}  // namespace panel
