#pragma once

#include <string>
#include <string_view>

// Manual pages of section 1, in roff, from the tables behind --help. Pure; thread: any.
namespace host {

// date: "2026-03-08", of the page.
[[nodiscard]] std::string clockHostPage(const std::string& date);
[[nodiscard]] std::string clockCtlPage(const std::string& date);

// Escapes the text for roff; `words` in backquotes become bold.
[[nodiscard]] std::string roff(std::string_view text);

}  // namespace host
