#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

// The words of one line of a scenario. Words are separated by blanks; "a word" in double quotes may
// hold blanks, \" \\ and \n; a word that begins with # ends the line. Throws UsageError for a quote
// that is not closed or an unknown escape. Pure; thread: any.
[[nodiscard]] std::vector<std::string> splitScenarioLine(std::string_view line);

}  // namespace host
