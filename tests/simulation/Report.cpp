#include "simulation/Report.h"

#include <algorithm>

namespace simulation {
namespace {

constexpr std::size_t kMostLines = 40;  // more than a snapshot has
constexpr const char* kNothing = "(nothing more)";

// Where both sides begin to differ, and how many lines they have in common from there to the end.
struct Middle {
  std::size_t begin;
  std::size_t rest;
};

Middle middleOf(const Difference& difference) {
  const Lines& a = difference.expected;
  const Lines& b = difference.actual;
  const auto begin = std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin();
  const auto most = static_cast<std::ptrdiff_t>(std::min(a.size(), b.size())) - begin;
  const auto rest = std::mismatch(a.rbegin(), a.rend(), b.rbegin(), b.rend()).first - a.rbegin();
  return {static_cast<std::size_t>(begin), static_cast<std::size_t>(std::min(rest, most))};
}

// The lines of one side that the other does not have in their place.
Lines differing(const Lines& own, const Lines& other, Middle middle) {
  Lines lines;
  for (std::size_t i = middle.begin; i + middle.rest < own.size(); ++i) {
    const bool paired = own.size() == other.size();
    if (!paired || own[i] != other[i]) lines.push_back(own[i]);
  }
  return lines;
}

std::string side(const char* title, const Lines& lines) {
  std::string text = std::string(title) + "\n";
  for (std::size_t i = 0; i < std::min(lines.size(), kMostLines); ++i) {
    text += "    " + lines[i] + "\n";
  }
  if (lines.empty()) return text + "    " + kNothing + "\n";
  if (lines.size() <= kMostLines) return text;
  return text + "    and " + std::to_string(lines.size() - kMostLines) + " lines\n";
}

std::string both(const Difference& difference) {
  const Middle middle = middleOf(difference);
  return side("  must be:", differing(difference.expected, difference.actual, middle)) +
         side("  is:", differing(difference.actual, difference.expected, middle));
}

std::string beginningOf(const Lines& lines, std::size_t at) {
  std::string line = at < lines.size() ? lines[at] : kNothing;
  const std::size_t firstWord = line.find(' ');
  if (firstWord != std::string::npos)
    line.resize(std::min(line.size(), line.find(' ', firstWord + 1)));
  line.erase(std::remove_if(line.begin(), line.end(), [](char c) { return c >= '0' && c <= '9'; }),
             line.end());
  return line;
}

}  // namespace

std::string faultOf(const Difference& difference) {
  const std::size_t at = middleOf(difference).begin;
  return beginningOf(difference.expected, at) + "\n" + beginningOf(difference.actual, at);
}

std::string differenceText(std::uint64_t seed, const Life& life) {
  const std::size_t step = life.difference->step;
  return "seed " + std::to_string(seed) + ", step " + std::to_string(step) +
         " of its life: " + (step == 0 ? "the first start" : describe(life.steps[step - 1])) +
         "\n" + both(*life.difference);
}

std::string wayText(const Life& shortest) {
  std::string text = "the shortest way there, from a first start:\n";
  const Steps& steps = shortest.steps;
  const std::size_t unseen = steps.size() > kShownSteps ? steps.size() - kShownSteps : 0;
  if (unseen > 0) text += "  " + std::to_string(unseen) + " steps, and then\n";
  for (std::size_t i = unseen; i < steps.size(); ++i) text += "  " + describe(steps[i]) + "\n";
  return text + "where\n" + both(*shortest.difference);
}

}  // namespace simulation
