#pragma once

#include <cstdarg>
#include <cstddef>
#include <span>
#include <string>

namespace host {

// printf-style text. Throws std::bad_alloc; a format that cannot be printed gives empty text.
[[nodiscard]] std::string formattedText(const char* format, va_list arguments)
    __attribute__((format(printf, 1, 0)));

// The same into a buffer, without allocation. Returns the length of the whole text; the buffer
// holds all but the last byte of what it has room for. The usual conversions take a fraction of
// vsnprintf's time.
[[nodiscard]] std::size_t formatInto(std::span<char> buffer, const char* format, va_list arguments)
    __attribute__((format(printf, 2, 0)));

}  // namespace host
