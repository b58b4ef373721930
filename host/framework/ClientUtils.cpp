#include "ClientUtils.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "base/Ascii.h"

namespace {

constexpr std::size_t kLongestHostname = 253;  // without the final dot, as RFC 1035 counts
constexpr std::size_t kLongestLabel = 63;

bool isLabelCharacter(char c) {
  return host::isDigit(c) || host::isLetter(c) || c == '-';
}

bool isLabel(std::string_view text) {
  return !text.empty() && text.size() <= kLongestLabel && text.front() != '-' &&
         text.back() != '-' && std::all_of(text.begin(), text.end(), isLabelCharacter);
}

// Removes the first label and its dot from `rest`.
std::string_view takeLabel(std::string_view& rest, bool& last) {
  const std::size_t dot = rest.find('.');
  last = dot == std::string_view::npos;
  const std::string_view label = rest.substr(0, dot);
  rest.remove_prefix(last ? rest.size() : dot + 1);
  return label;
}

}  // namespace

std::string ClientUtils::itos(int number) {
  return std::to_string(number);
}

int ClientUtils::stoi(const std::string& text) {
  using Limits = std::numeric_limits<int>;
  const long number = std::strtol(text.c_str(), nullptr, 10);
  return static_cast<int>(std::clamp<long>(number, Limits::min(), Limits::max()));
}

std::string ClientUtils::btos(bool value) {
  return value ? "true" : "false";
}

bool ClientUtils::stob(const std::string& text) {
  return text == "true";
}

bool ClientUtils::validGlobalHostname(const std::string& text) {
  std::string_view rest = text;
  if (!rest.empty() && rest.back() == '.') rest.remove_suffix(1);
  if (rest.size() > kLongestHostname) return false;
  for (bool last = false; !last;) {
    const std::string_view label = takeLabel(rest, last);
    if (!isLabel(label)) return false;
    if (last && std::all_of(label.begin(), label.end(), host::isDigit)) return false;
  }
  return true;
}
