#pragma once

#include <chrono>
#include <filesystem>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "apps/OptionParser.h"

namespace host {

// The command line of clockctl.
struct ClockCtlOptions {
  std::filesystem::path socket;
  std::filesystem::path controlSocket;
  bool json = false;
  std::optional<std::chrono::milliseconds> timeout;   // more than 0, up to a day
  std::optional<std::chrono::milliseconds> waitHost;  // at least 1 ms
  bool raw = false;                                   // names and values are not checked
  std::filesystem::path file;                         // of commands, "-": standard input
  bool keepGoing = false;         // a command that fails does not stop the others
  std::vector<std::string> verb;  // with its arguments
};

// The table of options. Values go to `options`, which outlives the parser.
[[nodiscard]] OptionParser clockCtlOptionParser(ClockCtlOptions& options);

// Either a verb or a file of commands is given. Options may stand before and after the verb, up to
// a word "--". Empty: help or version was requested, also with `help VERB` or `VERB --help`, and is
// on `out`. Throws UsageError.
[[nodiscard]] std::optional<ClockCtlOptions> readClockCtlOptions(
    std::span<const std::string> words, const std::filesystem::path& defaultSocket,
    std::ostream& out);

// Carries out `help [VERB]`. False: the words are another verb. Throws UsageError.
[[nodiscard]] bool printHelp(std::span<const std::string> words, bool json,
                             const std::filesystem::path& defaultSocket, std::ostream& out);

}  // namespace host
