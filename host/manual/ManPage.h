#pragma once

#include <string>
#include <string_view>

#include "apps/OptionParser.h"

// Manual pages of section 1, in roff, from the tables behind --help. Pure; thread: any.
namespace host {

// date: "2026-03-08", of the page.
[[nodiscard]] std::string clockHostPage(const std::string& date);
[[nodiscard]] std::string clockCtlPage(const std::string& date);

// Where an installed host listens.
inline constexpr const char* kSocketDefault =
    "$XDG_RUNTIME_DIR/clockhost.sock, else in the state folder";

// text: of the description; verbs, more: roff before and after the exit statuses.
[[nodiscard]] std::string programPage(const OptionParser& parser, const std::string& date,
                                      const std::string& text, const std::string& verbs,
                                      const std::string& more);

// Escapes the text for roff; `words` in backquotes become bold.
[[nodiscard]] std::string roff(std::string_view text);

}  // namespace host
