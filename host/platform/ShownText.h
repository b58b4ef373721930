#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Texts from outside, as they stand in lines for people. Pure; thread: any.
namespace host {

// Its first `most` bytes at most, without a character of UTF-8 cut apart.
[[nodiscard]] std::string_view beginningOf(std::string_view text, std::size_t most);

// The text, or of one longer than `most` bytes its beginning and "... (N bytes)".
[[nodiscard]] std::string clippedText(std::string_view text, std::size_t most);

// The same of a text of which only the beginning is there, more than `most` bytes of `whole`.
[[nodiscard]] std::string clippedText(std::string_view beginning, std::size_t most,
                                      std::size_t whole);

// Of ASCII, DEL and C1 (U+0080 to U+009F), which a terminal obeys.
[[nodiscard]] bool isControl(std::uint32_t code);

// UTF-8 without a control character: one line, and nothing in it that a terminal obeys.
[[nodiscard]] bool isPlainLine(std::string_view text);

// The text on one line: of control characters, and of bytes that are not UTF-8, each byte as \xNN;
// a line feed as \n.
[[nodiscard]] std::string escapedLine(std::string_view text);

// A word of an error line: in quotation marks, on one line, clipped.
[[nodiscard]] std::string quotedText(std::string_view text);

// What a program says when it cannot do as told: "PROGRAM: TEXT" and a newline, one line in all.
[[nodiscard]] std::string errorLine(std::string_view program, std::string_view text);

}  // namespace host
