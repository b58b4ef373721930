#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <iosfwd>
#include <span>
#include <string>

namespace host {

// The options of a program, with --help and --version. The last of two options of one name counts,
// so that the options of a script can be overridden. Owner: its creator. Thread: one.
class OptionParser : public CLI::App {
 public:
  // arguments: what the usage line shows after the options.
  OptionParser(const std::string& program, const std::string& description,
               const std::string& arguments = "");

  // A path, which must not be empty.
  CLI::Option* addPath(const char* name, std::filesystem::path& path, const char* help,
                       const char* type = "FILE");

  // False: help or version was requested, and is on `out`. Throws UsageError, one line.
  [[nodiscard]] bool read(std::span<const std::string> words, std::ostream& out);
};

}  // namespace host
