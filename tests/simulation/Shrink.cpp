// From a life of thousands of steps to the few that matter.

#include <algorithm>

#include "simulation/Life.h"

namespace simulation {
namespace {

constexpr std::size_t kMostLines = 12;

Steps without(const Steps& steps, std::size_t from, std::size_t count) {
  Steps rest(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(from));
  const std::size_t after = std::min(from + count, steps.size());
  rest.insert(rest.end(), steps.begin() + static_cast<std::ptrdiff_t>(after), steps.end());
  return rest;
}

// Tries lives that leave something out, as long as that is not too much work.
class Shrinker {
 public:
  Shrinker(Life life, const Liver& again) : m_life(std::move(life)), m_again(again) {}

  // Leaves out runs of `size` steps, from the end. True when there was one that could go.
  bool leaveOut(std::size_t size) {
    bool shorter = false;
    for (std::size_t end = m_life.steps.size(); end > 0 && !tired();) {
      const std::size_t from = end > size ? end - size : 0;
      shorter = isDifferent(without(m_life.steps, from, end - from)) || shorter;
      end = std::min(from, m_life.steps.size());
    }
    return shorter;
  }
  [[nodiscard]] bool tired() const { return m_lived > kMostSteps; }
  [[nodiscard]] const Life& life() const { return m_life; }

 private:
  bool isDifferent(const Steps& steps) {
    Life tried = m_again(steps);
    m_lived += tried.steps.size();
    const bool different = tried.difference.has_value();
    if (different) m_life = std::move(tried);
    return different;
  }

  Life m_life;
  const Liver& m_again;
  std::size_t m_lived = 0;
};

std::size_t firstDifferent(const Lines& a, const Lines& b) {
  const auto places = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
  return static_cast<std::size_t>(places.first - a.begin());
}

std::string side(const char* title, const Lines& lines, std::size_t from) {
  std::string text = std::string(title) + "\n";
  for (std::size_t i = from; i < lines.size() && i < from + kMostLines; ++i) {
    text += "    " + lines[i] + "\n";
  }
  return lines.size() <= from ? text + "    (nothing more)\n" : text;
}

std::string both(const Difference& difference) {
  const std::size_t at = firstDifferent(difference.expected, difference.actual);
  const std::size_t from = at > 2 ? at - 2 : 0;
  return side("  must be:", difference.expected, from) + side("  is:", difference.actual, from);
}

}  // namespace

Life shrunk(const Life& life, const Liver& again) {
  Shrinker shrinker(life, again);
  for (std::size_t size = std::max<std::size_t>(life.steps.size() / 2, 1);;) {
    const bool shorter = shrinker.leaveOut(size);
    if (shrinker.tired() || (size == 1 && !shorter)) return shrinker.life();
    size = std::max<std::size_t>(size / 2, 1);
  }
}

std::string report(std::uint64_t seed, const Life& life, const Life& shortest) {
  std::string text = "seed " + std::to_string(seed) + ", step " +
                     std::to_string(life.difference->step) + " of its life:\n" +
                     both(*life.difference) + "the shortest way there, from a first start:\n";
  for (const Step& step : shortest.steps) text += "  " + describe(step) + "\n";
  return text + "where\n" + both(*shortest.difference);
}

}  // namespace simulation
