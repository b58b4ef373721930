#pragma once

#include <filesystem>
#include <iosfwd>
#include <span>
#include <string>

namespace host {

// The operator's command: words in, lines out. Thread: its caller's.
// Exit status: 0 done, 1 refused or no reply, 2 usage, 3 no host at the socket. Errors are one line
// on `err`.
[[nodiscard]] int runClockCtl(std::span<const std::string> words,
                              const std::filesystem::path& defaultSocket, std::ostream& out,
                              std::ostream& err);

}  // namespace host
