#pragma once

#include <filesystem>
#include <iosfwd>
#include <span>
#include <string>

namespace host {

// clockctl with these arguments. Thread: its caller's.
// Exit status: 0 done, 1 refused or no reply, 2 usage, 3 no host at the socket. An error is one
// line on `err`; `watch` also prints "ready" there.
[[nodiscard]] int runClockCtl(std::span<const std::string> words,
                              const std::filesystem::path& defaultSocket, std::ostream& out,
                              std::ostream& err);

// Prints an error of clockctl with these arguments, and returns its exit status, 1.
[[nodiscard]] int failClockCtl(std::span<const std::string> words, const std::string& error,
                               std::ostream& err);

}  // namespace host
