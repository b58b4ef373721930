#include "fuzz/Property.h"

#include <algorithm>

namespace fuzz {

void hold(bool condition, const char* what, std::string_view of) {
  if (condition) return;
  throw Broken(std::string(what) + ": \"" + std::string(of.substr(0, 2 * kLongestLine)) + '"');
}

std::string_view Reader::take(std::size_t most) {
  const std::string_view taken = m_rest.substr(0, most);
  m_rest.remove_prefix(taken.size());
  return taken;
}

std::string_view Reader::line() {
  const std::string_view taken = take(m_rest.find('\n'));
  take(1);
  return taken;
}

std::string_view Reader::word() {
  const std::string_view taken = take(m_rest.find(' '));
  take(1);
  return taken;
}

std::string expanded(std::string_view text) {
  constexpr std::size_t kLongest = 1024 * 1024;
  std::string whole;
  for (std::size_t at = 0; at < text.size() && whole.size() < kLongest; ++at) {
    const bool repeats = !whole.empty() && text.substr(at, 2) == "\\#" && at + 2 < text.size() &&
                         text[at + 2] >= 'a' && text[at + 2] <= 't';
    if (!repeats) {
      whole += text[at];
      continue;
    }
    const std::size_t more = (std::size_t{2} << (text[at + 2] - 'a')) - 1;
    whole.append(std::min(more, kLongest - whole.size()), whole.back());
    at += 2;
  }
  return whole;
}

bool isShortLine(std::string_view text) {
  return !text.empty() && text.size() <= kLongestLine &&
         std::none_of(text.begin(), text.end(), [](char c) {
           const auto byte = static_cast<unsigned char>(c);
           return byte < 0x20 || byte == 0x7f;
         });
}

}  // namespace fuzz
