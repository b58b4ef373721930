#pragma once

#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdio>

// Prints into a fixed buffer, printf-style. A longer text is cut; the terminator is always there.
template <std::size_t size>
__attribute__((format(printf, 2, 3))) void boundedPrint(std::array<char, size>& buffer,
                                                        const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
  va_end(arguments);
}
