#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Makes texts from outside printable in one line. Pure; thread: any.
namespace host {

// At most the first `most` bytes, without cutting a UTF-8 character.
[[nodiscard]] std::string_view beginningOf(std::string_view text, std::size_t most);

// The text, or if it is longer than `most` bytes its beginning and "... (N bytes)".
[[nodiscard]] std::string clippedText(std::string_view text, std::size_t most);

// Control characters of ASCII, DEL and C1 (U+0080 to U+009F), which terminals interpret.
[[nodiscard]] bool isControl(std::uint32_t code);

// UTF-8 without control characters.
[[nodiscard]] bool isPlainLine(std::string_view text);

// The text on one line: each byte of control characters and of invalid UTF-8 as \xNN, a line feed
// as \n.
[[nodiscard]] std::string escapedLine(std::string_view text);

// The text for use in an error line: quoted, on one line, clipped.
[[nodiscard]] std::string quotedText(std::string_view text);

// A program's error message: "PROGRAM: TEXT" and a newline, one line in all.
[[nodiscard]] std::string errorLine(std::string_view program, std::string_view text);

}  // namespace host
