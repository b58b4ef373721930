#pragma once

#include <cstdarg>
#include <cstddef>
#include <string>

namespace host {

// printf-style text of any length. Throws std::bad_alloc; a format that cannot be printed gives
// empty text.
[[nodiscard]] std::string formattedText(const char* format, va_list arguments)
    __attribute__((format(printf, 1, 0)));

// The same, clipped as by clippedText; allocates only what is kept.
[[nodiscard]] std::string formattedText(const char* format, va_list arguments, std::size_t most)
    __attribute__((format(printf, 1, 0)));

}  // namespace host
