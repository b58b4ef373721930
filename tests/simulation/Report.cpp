// Shortens a run of thousands of steps to the few that matter, and prints them.

#include <algorithm>
#include <cctype>

#include "simulation/Run.h"

namespace simulation {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kMostSteps = 60;
constexpr const char* kNothing = "(no more lines)";

// The lines of `own` that differ from the other side, without the common beginning and end.
Lines differing(const Lines& own, const Lines& other) {
  const auto begin = std::mismatch(own.begin(), own.end(), other.begin(), other.end());
  const auto rest = std::mismatch(own.rbegin(), std::make_reverse_iterator(begin.first),
                                  other.rbegin(), std::make_reverse_iterator(begin.second));
  Lines lines(begin.first, rest.first.base());
  if (own.size() != other.size()) return lines;
  auto theirs = begin.second;
  lines.erase(std::remove_if(lines.begin(), lines.end(),
                             [&theirs](const std::string& line) { return line == *theirs++; }),
              lines.end());
  return lines;
}

std::string side(const char* title, const Lines& lines) {
  std::string text = std::string(title) + "\n";
  for (const std::string& line : lines) text += "    " + line + "\n";
  return lines.empty() ? text + "    " + kNothing + "\n" : text;
}

std::string both(const Difference& difference) {
  return side("  expected:", differing(difference.expected, difference.actual)) +
         side("  actual:", differing(difference.actual, difference.expected));
}

// The first two words, without digits.
std::string firstWords(const Lines& lines) {
  std::string line = lines.empty() ? kNothing : lines[0];
  const std::size_t blank = line.find(' ', line.find(' ') + 1);
  line.resize(std::min(line.size(), blank));
  line.erase(std::remove_if(line.begin(), line.end(),
                            [](unsigned char c) { return std::isdigit(c) != 0; }),
             line.end());
  return line;
}

Steps without(const Steps& steps, std::size_t from, std::size_t end) {
  Steps rest(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(from));
  rest.insert(rest.end(), steps.begin() + static_cast<std::ptrdiff_t>(end), steps.end());
  return rest;
}

}  // namespace

Run shrunk(Run run, const Runner& again, Clock::duration most) {
  const std::string fault = faultOf(*run.difference);
  const auto end = Clock::now() + most;
  bool shorter = true;
  for (std::size_t size = run.steps.size(); size > 1 || shorter;) {
    size = std::max<std::size_t>(size / 2, 1);
    shorter = false;
    for (std::size_t at = run.steps.size(); at > 0 && Clock::now() < end;) {
      const std::size_t from = at - std::min(size, at);
      Run tried = again(without(run.steps, from, at));
      const bool same = tried.difference && faultOf(*tried.difference) == fault;
      if (same) run = std::move(tried);
      shorter = shorter || same;
      at = std::min(from, run.steps.size());
    }
  }
  return run;
}

std::string faultOf(const Difference& difference) {
  return firstWords(differing(difference.expected, difference.actual)) + "\n" +
         firstWords(differing(difference.actual, difference.expected));
}

std::string differenceText(std::uint64_t seed, const Run& run) {
  const std::size_t step = run.difference->step;
  return "seed " + std::to_string(seed) + ", step " + std::to_string(step) + ": " +
         (step == 0 ? "the first start" : describe(run.steps[step - 1])) + "\n" +
         both(*run.difference);
}

std::string shortestRunText(const Run& shortest) {
  std::string text = "the shortest run that differs, from the first start:\n";
  const std::size_t size = shortest.steps.size();
  const std::size_t first = size - std::min(size, kMostSteps);
  if (first > 0) text += "  " + std::to_string(first) + " steps, then\n";
  for (std::size_t i = first; i < size; ++i) text += "  " + describe(shortest.steps[i]) + "\n";
  return text + "where\n" + both(*shortest.difference);
}

}  // namespace simulation
