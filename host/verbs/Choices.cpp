#include "verbs/Choices.h"

#include <algorithm>

namespace host {

std::string alternatives(std::span<const std::string_view> words) {
  std::string list;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i > 0) list += i + 1 == words.size() ? " or " : ", ";
    list += words[i];
  }
  return list;
}

std::vector<std::string_view> listedValues(std::string_view usage) {
  const bool upper =
      std::any_of(usage.begin(), usage.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
  if (upper || usage.find('|') == std::string_view::npos) return {};
  std::vector<std::string_view> words;
  for (std::size_t bar = usage.find('|'); bar != std::string_view::npos; bar = usage.find('|')) {
    words.push_back(usage.substr(0, bar));
    usage.remove_prefix(bar + 1);
  }
  words.push_back(usage);
  return words;
}

}  // namespace host
