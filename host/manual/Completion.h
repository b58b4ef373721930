#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "apps/OptionParser.h"

// What a shell completes for a program, from the tables behind --help, and the scripts that make
// bash, zsh and fish do so. Pure; thread: any.
namespace host {

struct Candidate {
  std::string word;
  std::string help{};  // may be empty
};

// After these arguments, one of the words may follow. A "*" stands for any argument.
struct Position {
  std::string arguments;  // "", "clock", "clock to", "set *"
  std::vector<Candidate> words;
};

struct ProgramWords {
  std::string name;
  std::vector<Option> options;
  std::vector<Position> positions;
};

[[nodiscard]] ProgramWords hostWords();
[[nodiscard]] ProgramWords ctlWords();

[[nodiscard]] std::string bashCompletion(const ProgramWords& program);
[[nodiscard]] std::string zshCompletion(const ProgramWords& program);
[[nodiscard]] std::string fishCompletion(const ProgramWords& program);

}  // namespace host
