#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "manual/Completion.h"

namespace host {

// The manual page of a program, and what shells complete for it.
struct Manual {
  std::string page;
  ProgramWords words;
};

// The main function of a program that is called as `NAME FOLDER DATE`, and writes the manuals into
// the folder. Returns the exit status.
[[nodiscard]] int writeManuals(
    const std::vector<std::string>& words, const char* name,
    const std::function<std::vector<Manual>(const std::string& date)>& manuals);

}  // namespace host
