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
struct Place {
  std::string arguments;  // "", "clock", "clock to", "set *"
  std::vector<Candidate> words;
};

struct Completed {
  std::string program;
  std::vector<Option> options;
  std::vector<Place> places;
};

[[nodiscard]] Completed completedHost();
[[nodiscard]] Completed completedCtl();

[[nodiscard]] std::string bashCompletion(const Completed& completed);
[[nodiscard]] std::string zshCompletion(const Completed& completed);
[[nodiscard]] std::string fishCompletion(const Completed& completed);

}  // namespace host
