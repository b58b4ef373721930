#include "base/FormattedText.h"

#include <algorithm>
#include <cstdio>

#include "base/PrintableText.h"

namespace host {

std::string formattedText(const char* format, va_list arguments, std::size_t most) {
  constexpr std::size_t kUsual = 256;
  char usual[kUsual];
  va_list again;
  va_copy(again, arguments);
  const int printed = std::vsnprintf(usual, sizeof usual, format, arguments);
  const auto length = static_cast<std::size_t>(printed < 0 ? 0 : printed);
  std::string text;
  if (length < sizeof usual) {
    text.assign(usual, length);
  } else {
    text.resize(std::min(length, most + 1));
    std::vsnprintf(text.data(), text.size() + 1, format, again);
  }
  va_end(again);
  return clippedText(text, most, length);
}

}  // namespace host
