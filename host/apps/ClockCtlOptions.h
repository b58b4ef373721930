#pragma once

#include <chrono>
#include <filesystem>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace host {

// What stands beside the verb on clockctl's command line.
struct ClockCtlOptions {
  std::filesystem::path socket;
  std::filesystem::path controlSocket;
  bool json = false;
  std::optional<std::chrono::milliseconds> timeout;  // as given; more than 0, up to a day
  std::vector<std::string> verb;                     // and its arguments
};

// Options may stand before the verb and after it, up to a word "--". Empty when help or version was
// asked for, which is then written to `out`. Throws UsageError.
[[nodiscard]] std::optional<ClockCtlOptions> readClockCtlOptions(
    std::span<const std::string> words, const std::filesystem::path& defaultSocket,
    std::ostream& out);

}  // namespace host
