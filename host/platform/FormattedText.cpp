#include "platform/FormattedText.h"

#include <cstdio>

namespace host {

std::string formattedText(const char* format, va_list arguments) {
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
    text.resize(length);
    std::vsnprintf(text.data(), length + 1, format, again);
  }
  va_end(again);
  return text;
}

}  // namespace host
