#include "base/FormattedText.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string_view>

namespace host {
namespace {

class BufferWriter {
 public:
  explicit BufferWriter(std::span<char> buffer) : m_left(buffer) {}

  void put(std::string_view text) {
    m_length += text.size();
    m_left = m_left.subspan(text.copy(m_left.data(), m_left.size()));
  }

  template <class Number>
  void putNumber(Number number) {
    std::array<char, std::numeric_limits<Number>::digits10 + 2> digits;  // with a sign
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    put({digits.data(), static_cast<std::size_t>(end - digits.data())});
  }

  [[nodiscard]] std::size_t length() const { return m_length; }

 private:
  std::span<char> m_left;
  std::size_t m_length = 0;
};

enum class Conversion { none, text, integer, natural, longInteger, longNatural, other };

// Removes the text before the next conversion, and the conversion.
Conversion nextConversion(const char*& format, std::string_view& before) {
  const char* const percent = ::strchrnul(format, '%');
  before = {format, static_cast<std::size_t>(percent - format)};
  if (*percent == '\0') return Conversion::none;
  const bool isLong = percent[1] == 'l';
  const char kind = percent[isLong ? 2 : 1];
  format = percent + (isLong ? 3 : 2);
  if (kind == 'd') return isLong ? Conversion::longInteger : Conversion::integer;
  if (kind == 'u') return isLong ? Conversion::longNatural : Conversion::natural;
  return kind == 's' && !isLong ? Conversion::text : Conversion::other;
}

// False for a conversion other than %s, %d, %u, %ld and %lu.
bool printUsual(BufferWriter& out, const char* format, va_list arguments) {
  for (;;) {
    std::string_view before;
    const Conversion conversion = nextConversion(format, before);
    out.put(before);
    switch (conversion) {
      case Conversion::none:
        return true;
      case Conversion::text: {
        const char* const text = va_arg(arguments, const char*);
        if (text == nullptr) return false;
        out.put(text);
        break;
      }
      case Conversion::integer:
        out.putNumber(va_arg(arguments, int));
        break;
      case Conversion::natural:
        out.putNumber(va_arg(arguments, unsigned int));
        break;
      case Conversion::longInteger:
        out.putNumber(va_arg(arguments, long));
        break;
      case Conversion::longNatural:
        out.putNumber(va_arg(arguments, unsigned long));
        break;
      case Conversion::other:
        return false;
    }
  }
}

}  // namespace

std::string formattedText(const char* format, va_list arguments) {
  constexpr std::size_t kUsual = 256;
  va_list again;
  va_copy(again, arguments);
  std::string text(kUsual, '\0');
  const std::size_t length = formatInto(text, format, arguments);
  text.resize(length);
  if (length >= kUsual) {
    text.resize(length + 1);
    static_cast<void>(formatInto(text, format, again));
    text.pop_back();
  }
  va_end(again);
  return text;
}

std::size_t formatInto(std::span<char> buffer, const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  BufferWriter out(buffer);
  std::size_t length = 0;
  if (printUsual(out, format, arguments)) {
    length = out.length();
  } else {
    const int printed = std::vsnprintf(buffer.data(), buffer.size(), format, again);
    length = printed < 0 ? 0 : static_cast<std::size_t>(printed);
  }
  va_end(again);
  return length;
}

}  // namespace host
