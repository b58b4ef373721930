#pragma once

#include <cstdarg>
#include <cstddef>
#include <limits>
#include <string>

namespace host {

// The longest text that vsnprintf supports.
inline constexpr std::size_t kLongestFormatted = std::numeric_limits<int>::max();

// printf-style text, clipped to `most` bytes as by clippedText; allocates only what is kept. Throws
// std::bad_alloc; a format that cannot be printed gives empty text.
[[nodiscard]] std::string formattedText(const char* format, va_list arguments,
                                        std::size_t most = kLongestFormatted)
    __attribute__((format(printf, 1, 0)));

}  // namespace host
