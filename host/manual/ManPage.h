#pragma once

#include <string>

// Manual pages of section 1, in roff, from the tables behind --help. Pure; thread: any.
namespace host {

// date: "2026-03-08", of the page.
[[nodiscard]] std::string clockHostPage(const std::string& date);
[[nodiscard]] std::string clockCtlPage(const std::string& date);

// The text for roff: its characters as they are, and `words` in bold.
[[nodiscard]] std::string roff(std::string_view text);

}  // namespace host
