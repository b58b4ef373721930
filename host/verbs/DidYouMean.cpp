#include "verbs/DidYouMean.h"

#include <algorithm>
#include <vector>

namespace host {
namespace {

// Bounds the cost of a comparison. All known words are shorter.
constexpr std::size_t kLongestWord = 128;

// A typing error changes at most a third of the longer word, or one letter of a short one.
constexpr std::size_t kLettersPerError = 3;

std::string lowerCase(std::string_view text) {
  std::string lower(text.substr(0, kLongestWord));
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return lower;
}

bool isTypingError(std::string_view word, std::string_view meant) {
  const std::size_t longer = std::min(std::max(word.size(), meant.size()), kLongestWord);
  return editDistance(word, meant) <= std::max<std::size_t>(1, longer / kLettersPerError);
}

bool swapped(const std::string& a, const std::string& b, std::size_t i, std::size_t j) {
  return i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
}

}  // namespace

std::size_t editDistance(std::string_view left, std::string_view right) {
  const std::string a = lowerCase(left);
  const std::string b = lowerCase(right);
  std::vector<std::vector<std::size_t>> cost(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) cost[i][0] = i;
  for (std::size_t j = 0; j <= b.size(); ++j) cost[0][j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = cost[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      cost[i][j] = std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, replaced});
      if (swapped(a, b, i, j)) cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
    }
  }
  return cost[a.size()][b.size()];
}

std::string_view nearest(std::string_view word, std::span<const std::string_view> candidates) {
  std::string_view best;
  auto least = static_cast<std::size_t>(-1);
  for (const std::string_view candidate : candidates) {
    const std::size_t distance = editDistance(word, candidate);
    if (distance < least) {
      least = distance;
      best = candidate;
    }
  }
  return best;
}

std::string suggestion(std::string_view word, std::span<const std::string_view> candidates,
                       std::string_view otherwise) {
  const std::string_view best = nearest(word, candidates);
  if (best.empty() || !isTypingError(word, best)) return std::string(otherwise);
  return "; did you mean \"" + std::string(best) + "\"?";
}

}  // namespace host
